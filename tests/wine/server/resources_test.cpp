#include <gtest/gtest.h>

#include <set>

#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

std::string_view registryScript(int id) {
    const HMODULE module = kelUtils().module();
    const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(id), L"REGISTRY");
    return {static_cast<const char*>(LockResource(LoadResource(module, resource))),
            SizeofResource(module, resource)};
}

BOOL CALLBACK note(HMODULE, const wchar_t*, wchar_t* name, LONG_PTR found) {
    EXPECT_TRUE(IS_INTRESOURCE(name));
    reinterpret_cast<std::set<int>*>(found)->insert(reinterpret_cast<LONG_PTR>(name));
    return TRUE;
}

TEST(Resources, EveryClassHasItsScriptAndThereIsOneThatIsNeverRun) {
    std::set<int> found;
    EnumResourceNamesW(kelUtils().module(), L"REGISTRY", note, reinterpret_cast<LONG_PTR>(&found));
    EXPECT_EQ(found, (std::set{102, 104, 107, 108, 111, 114, 116, 118, 120, 121, 123, 124, 127, 149,
                               152, 153, 155, 158, 163}));
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

}  // namespace
}  // namespace kel::test
