#include <gtest/gtest.h>

#include <set>

#include "com/text.h"
#include "tests/wine/server/expected.h"
#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

std::string registryScript(int id) {
    const HRSRC resource = FindResourceW(kelUtils().module(), MAKEINTRESOURCEW(id), L"REGISTRY");
    if (!resource) return {};
    return {static_cast<const char*>(LockResource(LoadResource(kelUtils().module(), resource))),
            SizeofResource(kelUtils().module(), resource)};
}

BOOL CALLBACK note(HMODULE, const wchar_t*, wchar_t* name, LONG_PTR found) {
    EXPECT_TRUE(IS_INTRESOURCE(name));
    reinterpret_cast<std::set<int>*>(found)->insert(reinterpret_cast<LONG_PTR>(name));
    return TRUE;
}

TEST(Resources, EveryClassHasItsScriptAndThereIsOneThatIsNeverRun) {
    std::set<int> expected = {116};
    for (const ExpectedClass& row : expectedClasses()) {
        if (row.registryScript == 0) continue;
        expected.insert(row.registryScript);
        EXPECT_NE(registryScript(row.registryScript).find(toText(row.identifier)),
                  std::string::npos)
            << row.name;
    }
    std::set<int> found;
    EnumResourceNamesW(kelUtils().module(), L"REGISTRY", note, reinterpret_cast<LONG_PTR>(&found));
    EXPECT_EQ(found, expected);
    EXPECT_EQ(registryScript(116), registryScript(118));
}

TEST(Resources, ToolboxBitmapsShowSomething) {
    for (const int id : {101, 157, 162}) {
        SCOPED_TRACE(id);
        const HANDLE bitmap = LoadImageW(kelUtils().module(), MAKEINTRESOURCEW(id), IMAGE_BITMAP, 0,
                                         0, LR_CREATEDIBSECTION);
        DIBSECTION section = {};
        ASSERT_NE(GetObjectW(bitmap, sizeof section, &section), 0);
        EXPECT_EQ(section.dsBm.bmWidth, 16);
        EXPECT_EQ(section.dsBm.bmHeight, 16);
        const auto* bits = static_cast<const char*>(section.dsBm.bmBits);
        EXPECT_GE(std::set<char>(bits, bits + section.dsBm.bmWidthBytes * 16).size(), 3u);
        DeleteObject(bitmap);
    }
}

TEST(Resources, VersionIsTold) {
    const std::wstring path = kelUtils().path();
    std::string data(GetFileVersionInfoSizeW(path.c_str(), nullptr), '\0');
    ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(data.size()), data.data()));
    void* value = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(data.data(), L"\\", &value, &size));
    EXPECT_EQ(static_cast<VS_FIXEDFILEINFO*>(value)->dwFileVersionMS, 0x00010000u);
    ASSERT_TRUE(VerQueryValueW(data.data(), L"\\StringFileInfo\\040904B0\\OriginalFilename", &value,
                               &size));
    EXPECT_STREQ(static_cast<wchar_t*>(value), L"KelUtils.dll");
}

TEST(Exports, AreTheFourEntryPoints) {
    const auto base = reinterpret_cast<const char*>(kelUtils().module());
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(
        base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(
        base + headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
    const auto* names = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
    std::set<std::string> found;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
        found.insert(base + names[i]);
    EXPECT_EQ(found, (std::set<std::string>{"DllCanUnloadNow", "DllGetClassObject",
                                            "DllRegisterServer", "DllUnregisterServer"}));
    EXPECT_EQ(exports->NumberOfFunctions, 4u);
}

}  // namespace
}  // namespace kel::test
