#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <regex>
#include <thread>

#include "com/message_loop.h"
#include "com/text.h"
#include "hosts/shared/activation_context.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/server/expected.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"
#include "tests/wine/support/temporary_folder.h"

namespace kel::test {
namespace {

std::string bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string manifestText() {
    return bytesOf(std::filesystem::path(kelUtils().path()).replace_extension(L".manifest"));
}

// A copy of the library that nothing knows but its manifest. Its ProgIDs begin with Bare, for those
// of the library may stand in the registry.
class Manifest : public testing::Test {
protected:
    Manifest() {
        std::string text = manifestText();
        text = std::regex_replace(text, std::regex("progid=\"KelUtils\\."), "progid=\"Bare.");
        text = std::regex_replace(text, std::regex("<progid>KelUtils\\."), "<progid>Bare.");
        manifest_ = folder_.file(L"Bare.manifest", text);
        library_ = folder_.file(L"KelUtils.dll", bytesOf(kelUtils().path()));
    }
    ~Manifest() override {
        context_.reset();
        CoFreeUnusedLibrariesEx(0, 0);
    }

    void activate() { context_ = std::make_unique<host::ActivationContext>(manifest_); }

    // The class that an object of the copy says to be of; GUID_NULL when the library refuses it.
    CLSID create(REFCLSID identifier) const {
        com::ComPtr<IProvideClassInfo> object;
        const HRESULT code =
            CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object));
        EXPECT_EQ(code, object ? S_OK : E_NOTIMPL);
        if (!object) return GUID_NULL;
        EXPECT_TRUE(isOfTheCopy(object.Get()));
        com::ComPtr<ITypeInfo> type;
        TYPEATTR* attributes = nullptr;
        com::check(object->GetClassInfo(&type));
        com::check(type->GetTypeAttr(&attributes));
        const CLSID said = attributes->guid;
        type->ReleaseTypeAttr(attributes);
        return said;
    }

    bool isOfTheCopy(IUnknown* object) const {
        HMODULE module = nullptr;
        GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            *reinterpret_cast<const wchar_t**>(object), &module);
        return module && module == GetModuleHandleW(library_.c_str());
    }

    TemporaryFolder folder_;
    std::wstring manifest_;
    std::wstring library_;
    std::unique_ptr<host::ActivationContext> context_;
};

TEST_F(Manifest, MakesEveryClassByIdentifierAndName) {
    CLSID found;
    EXPECT_NE(CLSIDFromProgID(L"Bare.Preprocessor", &found), S_OK);
    EXPECT_FALSE(host::manifestOf(CLSID_Preprocessor));
    activate();
    for (const ExpectedClass& row : expectedClasses()) {
        if (row.registryScript == 0) continue;
        SCOPED_TRACE(row.name);
        const std::string name = "Bare." + (row.name == "HTMLWindow" ? "HTMLDialog" : row.name);
        EXPECT_EQ(host::manifestOf(row.identifier), manifest_);
        EXPECT_EQ(create(row.identifier), isBuilt(row) ? row.identifier : GUID_NULL);
        // The system answers with an identifier of its own that stands for the class's.
        for (const std::string& version : {name, name + ".1"}) {
            ASSERT_EQ(CLSIDFromProgID(com::widen(version).c_str(), &found), S_OK) << version;
            EXPECT_EQ(create(found), isBuilt(row) ? row.identifier : GUID_NULL) << version;
        }
    }
}

TEST_F(Manifest, MakesTheTypeLibraryKnown) {
    const RegistrySandbox nothing(HKEY_CLASSES_ROOT);
    com::ComPtr<ITypeLib> library;
    EXPECT_NE(LoadRegTypeLib(LIBID_KELUTILSLib, 1, 0, 1033, &library), S_OK);
    activate();
    EXPECT_EQ(LoadRegTypeLib(LIBID_KELUTILSLib, 1, 0, 1033, &library), S_OK);
}

TEST_F(Manifest, CarriesCallsFromThreadToThread) {
    const RegistrySandbox nothing(HKEY_CLASSES_ROOT);
    activate();
    com::ComPtr<IPreprocessorControl> object;
    ASSERT_EQ(
        CoCreateInstance(CLSID_Preprocessor, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object)),
        S_OK);
    IStream* passed = nullptr;
    ASSERT_EQ(CoMarshalInterThreadInterfaceInStream(__uuidof(IPreprocessorControl), object.Get(),
                                                    &passed),
              S_OK);
    std::future<HRESULT> answer = std::async(std::launch::async, [&] {
        const host::ActivationContext context(manifest_);
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        HRESULT code;
        {
            com::ComPtr<IPreprocessorControl> there;
            code = CoGetInterfaceAndReleaseStream(passed, IID_PPV_ARGS(&there));
            if (SUCCEEDED(code)) code = there->put_ScriptName(com::Bstr(L"from there").get());
        }
        CoUninitialize();
        return code;
    });
    while (answer.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        com::runWaitingMessages();
        com::sleepUntilMessage(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(answer.get(), S_OK);
    com::Bstr name;
    EXPECT_EQ(object->get_ScriptName(name.put()), S_OK);
    EXPECT_EQ(name.view(), L"from there");
}

// Each interface of the type library, with the platform's marshaller for its kind.
TEST(ManifestText, NamesEveryInterface) {
    std::set<std::string> expected;
    for (const std::string& line : resourceLines(L"interface_table")) {
        if (line.starts_with(" ") || line.starts_with("library")) continue;
        const auto start = line.find(' ') + 1;
        expected.insert(line.substr(start, line.find(' ', start) - start) + " " +
                        line.substr(line.find('{')) +
                        (line.starts_with("events") ? " 00020420" : " 00020424"));
    }
    const std::string text = manifestText();
    const std::regex form(
        "<comInterfaceExternalProxyStub name=\"(\\w+)\" iid=\"(\\S+)\"\\s+tlbid=\"(\\S+)\" "
        "proxyStubClsid32=\"\\{(\\d+)-0000-0000-C000-000000000046\\}\"/>");
    std::set<std::string> found;
    for (std::sregex_iterator it(text.begin(), text.end(), form), end; it != end; ++it) {
        EXPECT_EQ((*it)[3], toText(LIBID_KELUTILSLib));
        found.insert((*it)[1].str() + " " + (*it)[2].str() + " " + (*it)[4].str());
    }
    EXPECT_EQ(joined(found), joined(expected));
}

}  // namespace
}  // namespace kel::test
