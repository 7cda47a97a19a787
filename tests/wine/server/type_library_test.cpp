#include <gtest/gtest.h>

#include <map>

#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/server/expected.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/type_library.h"

namespace kel::test {
namespace {

using com::ComPtr;

// Name and help string of a member of a type, or of the type itself.
struct Documentation {
    std::string name;
    std::string help;
};

template <class Info>
Documentation documentationOf(Info* info, MEMBERID member) {
    com::Bstr name;
    com::Bstr help;
    com::check(info->GetDocumentation(member, name.put(), help.put(), nullptr, nullptr));
    EXPECT_GT(help.view().size(), 0u) << com::narrow(name.get()) << " has no help string";
    return {com::narrow(name.get()), com::narrow(help.get())};
}

void addMembers(ITypeInfo* type, bool withSlots, std::vector<std::string>& lines) {
    forEachOwnMember(type, [&](ITypeInfo*, const FUNCDESC& function) {
        const std::string slot = std::to_string(function.oVft / sizeof(void*)) + " ";
        lines.push_back("  " + (withSlots ? slot : "") + kindOf(function.invkind) +
                        documentationOf(type, function.memid).name + " " +
                        std::to_string(function.memid));
    });
}

// The entry of an interface in the form of interface_table.txt; none for a class.
std::vector<std::string> entryOf(ITypeInfo* type) {
    const TYPEATTR attributes = attributesOf(type);
    const std::string name = nameOf(type);
    // The generator copies the one interface of the page classes into the library.
    if (name == "IUnknown") return {};
    std::vector<std::string> lines;
    if (attributes.typekind == TKIND_INTERFACE || (attributes.wTypeFlags & TYPEFLAG_FDUAL)) {
        ComPtr<ITypeInfo> vtable = type;
        if (attributes.typekind == TKIND_DISPATCH) vtable = implemented(type, -1);
        lines.push_back((attributes.wTypeFlags & TYPEFLAG_FDUAL ? "dual " : "plain ") + name +
                        " : " + nameOf(implemented(vtable.Get(), 0).Get()) + " " +
                        toText(attributes.guid));
        addMembers(vtable.Get(), true, lines);
    } else if (attributes.typekind == TKIND_DISPATCH) {
        lines.push_back("events " + name + " " + toText(attributes.guid));
        addMembers(type, false, lines);
    }
    if (!lines.empty()) documentationOf(type, MEMBERID_NIL);
    return lines;
}

std::string interfacesOf(ITypeInfo* coclass) {
    std::string text;
    for (UINT i = 0; i < attributesOf(coclass).cImplTypes; ++i) {
        INT flags = 0;
        com::check(coclass->GetImplTypeFlags(i, &flags));
        if (i > 0) text += ", ";
        if (flags & IMPLTYPEFLAG_FDEFAULT) text += "default ";
        if (flags & IMPLTYPEFLAG_FSOURCE) text += "source ";
        text += nameOf(implemented(coclass, i).Get());
    }
    return text;
}

TEST(TypeLibrary, HoldsExactlyTheInterfacesOfTheTable) {
    ComPtr<ITypeLib> all;
    com::check(LoadTypeLibEx(kelUtils().path().c_str(), REGKIND_NONE, &all));
    const Documentation library = documentationOf(all.Get(), MEMBERID_NIL);
    TLIBATTR* attributes = nullptr;
    com::check(all->GetLibAttr(&attributes));
    std::vector<std::string> lines = {
        "library " + library.name + " " + toText(attributes->guid) + " " +
        std::to_string(attributes->wMajorVerNum) + "." + std::to_string(attributes->wMinorVerNum) +
        " " + std::to_string(attributes->lcid) + " \"" + library.help + "\""};
    all->ReleaseTLibAttr(attributes);

    // Interfaces by name, events after them.
    std::map<std::string, std::vector<std::string>> entries;
    for (const ComPtr<ITypeInfo>& type : libraryTypes()) {
        const std::vector<std::string> entry = entryOf(type.Get());
        if (entry.empty()) continue;
        const bool isEvents = entry[0].starts_with("events");
        entries[std::string(isEvents ? "2" : "1").append(nameOf(type.Get()))] = entry;
    }
    for (const auto& [name, entry] : entries)
        lines.insert(lines.end(), entry.begin(), entry.end());
    EXPECT_EQ(lines, linesOf("interface_table.txt"));
}

TEST(TypeLibrary, HoldsExactlyTheClassesOfTheTable) {
    std::map<std::string, std::string> expected;
    for (const ExpectedClass& row : expectedClasses()) {
        expected[toText(row.identifier)] =
            row.name + (row.registryScript ? " " : " noncreatable ") + row.interfaces;
    }
    std::map<std::string, std::string> found;
    for (const ComPtr<ITypeInfo>& type : libraryTypes()) {
        const TYPEATTR attributes = attributesOf(type.Get());
        if (attributes.typekind != TKIND_COCLASS) continue;
        const bool isCreatable = attributes.wTypeFlags & TYPEFLAG_FCANCREATE;
        found[toText(attributes.guid)] = documentationOf(type.Get(), MEMBERID_NIL).name +
                                         (isCreatable ? " " : " noncreatable ") +
                                         interfacesOf(type.Get());
    }
    EXPECT_EQ(found, expected);
}

}  // namespace
}  // namespace kel::test
