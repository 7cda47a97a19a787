#include <gtest/gtest.h>

#include <set>

#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "tests/support/temporary_file.h"
#include "tests/wine/server/library_classes.h"
#include "tests/wine/support/registry_sandbox.h"

namespace kel::test {
namespace {

using com::ComPtr;

// The name of a member of a type, or of the type itself, which has to be explained.
template <class Info>
std::string explained(Info* info, MEMBERID member = MEMBERID_NIL) {
    com::Bstr name, help;
    com::check(info->GetDocumentation(member, name.put(), help.put(), nullptr, nullptr));
    EXPECT_NE(help.view(), L"") << com::narrow(name.get()) << " has no help string";
    return com::narrow(name.get());
}

std::string entryOf(const LibraryClass& each) {
    return (each.isCreatable ? "class " : "noncreatable class ") + explained(each.type.Get()) +
           " " + toText(each.identifier) + " " + each.interfaces +
           (each.refusal.empty() ? "" : "; " + each.refusal);
}

// That of an interface, with a line for each of its members.
std::string entryOf(ITypeInfo* type) {
    const TYPEATTR attributes = attributesOf(type);
    const bool isEvents = attributes.typekind == TKIND_DISPATCH;
    const bool isDual = attributes.wTypeFlags & TYPEFLAG_FDUAL;
    const std::string kind = isEvents ? "events " : isDual ? "dual " : "plain ";
    const std::string base = isEvents ? "" : " : " + nameOf(implemented(type, 0).Get());
    std::string entry = kind + explained(type) + base + " " + toText(attributes.guid);
    forEachOwnMember(type, [&](ITypeInfo* declaredBy, const FUNCDESC& function) {
        const std::string slot = std::to_string(function.oVft / sizeof(void*)) + " ";
        entry += "\n  " + (isEvents ? "" : slot) + kindOf(function.invkind) +
                 explained(declaredBy, function.memid) + " " + std::to_string(function.memid);
    });
    return entry;
}

TEST(TypeLibrary, HoldsExactlyWhatTheTableTells) {
    ComPtr<ITypeLib> library;
    com::check(LoadTypeLibEx(kelUtils().path().c_str(), REGKIND_NONE, &library));
    std::set<std::string> entries{"library " + explained(library.Get())};
    for (const LibraryClass& each : libraryClasses())
        entries.insert(entryOf(each));
    for (const ComPtr<ITypeInfo>& type : libraryTypes()) {
        const TYPEATTR attributes = attributesOf(type.Get());
        const bool isDual = attributes.wTypeFlags & TYPEFLAG_FDUAL;
        const bool isInterface = isDual || attributes.typekind == TKIND_INTERFACE ||
                                 attributes.typekind == TKIND_DISPATCH;
        // The generator copies the one interface of the page classes into the library.
        if (isInterface && nameOf(type.Get()) != "IUnknown")
            entries.insert(entryOf(isDual ? implemented(type.Get(), -1).Get() : type.Get()));
    }
    EXPECT_EQ(joined(entries),
              TemporaryFile::bytesOf(projectFile("tests/wine/server/type_library.txt")));
}

}  // namespace
}  // namespace kel::test
