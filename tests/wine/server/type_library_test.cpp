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
std::string entryOf(ITypeInfo* type, const char* kind) {
    const bool isEvents = kind == std::string("events ");
    const std::string base = isEvents ? "" : " : " + nameOf(implemented(type, 0).Get());
    std::string entry = kind + explained(type) + base + " " + toText(attributesOf(type).guid);
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
        // The generator copies the one interface of the page classes into the library.
        if (nameOf(type.Get()) == "IUnknown") continue;
        if (attributes.wTypeFlags & TYPEFLAG_FDUAL)
            entries.insert(entryOf(implemented(type.Get(), -1).Get(), "dual "));
        else if (attributes.typekind == TKIND_INTERFACE)
            entries.insert(entryOf(type.Get(), "plain "));
        else if (attributes.typekind == TKIND_DISPATCH)
            entries.insert(entryOf(type.Get(), "events "));
    }
    EXPECT_EQ(joined(entries),
              TemporaryFile::bytesOf(projectFile("tests/wine/server/type_library.txt")));
}

}  // namespace
}  // namespace kel::test
