#include <optional>

#include "tests/wine/support/bench_link.h"
#include "tests/wine/support/registry_sandbox.h"

namespace kel::bench::test {
namespace {

constexpr wchar_t kSerial[] = L"CLSID\\{50AEA896-D75C-4B50-83E5-4FD1CD14EDEF}\\InprocServer32";
constexpr wchar_t kNetwork[] = L"CLSID\\{8C1E8A0D-3F42-4E6B-9B57-6A0C2D917E34}\\InprocServer32";
constexpr wchar_t kCommunicator[] =
    L"CLSID\\{4D0F6B1C-92E7-4A53-B81E-63C50A7DF298}\\InprocServer32";

// Its own HKEY_CLASSES_ROOT, empty at first.
class RegistrationTest : public testing::Test {
protected:
    static HRESULT call(const char* entryPoint) {
        return kel::test::exportOf<HRESULT WINAPI()>(kel::test::benchLink().module(), entryPoint)();
    }

    static std::optional<std::wstring> read(const wchar_t* key) {
        wchar_t text[MAX_PATH];
        DWORD size = sizeof text;
        if (RegGetValueW(HKEY_CLASSES_ROOT, key, nullptr, RRF_RT_REG_SZ, nullptr, text, &size)) {
            return std::nullopt;
        }
        return text;
    }

    static void write(const wchar_t* key, const std::wstring& text) {
        ASSERT_EQ(RegSetKeyValueW(HKEY_CLASSES_ROOT, key, nullptr, REG_SZ, text.c_str(),
                                  static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }

    kel::test::RegistrySandbox classes_{HKEY_CLASSES_ROOT};
};

TEST_F(RegistrationTest, LeavesForeignClassesAlone) {
    write(kSerial, L"\"C:\\Link\\RealLink.dll\"");
    write(kNetwork, L"D:\\elsewhere\\benchlink.DLL");
    ASSERT_EQ(call("DllRegisterServer"), S_OK);
    EXPECT_EQ(read(kSerial), L"\"C:\\Link\\RealLink.dll\"");
    EXPECT_EQ(read(L"BenchLink.SerialStream\\CLSID"), std::nullopt);
    EXPECT_EQ(read(kNetwork), kel::test::benchLink().path()) << "an older copy is replaced";
    for (const wchar_t* foreign : {L"Interface", L"TypeLib"}) {
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyW(HKEY_CLASSES_ROOT, foreign, &key), ERROR_FILE_NOT_FOUND);
    }

    write(kNetwork, L"D:\\elsewhere\\BenchLink.dll");
    ASSERT_EQ(call("DllUnregisterServer"), S_OK);
    EXPECT_EQ(read(kSerial), L"\"C:\\Link\\RealLink.dll\"");
    EXPECT_EQ(read(kNetwork), L"D:\\elsewhere\\BenchLink.dll") << "serves from another file";
    EXPECT_EQ(read(kCommunicator), std::nullopt);
}

}  // namespace
}  // namespace kel::bench::test
