#include <gtest/gtest.h>

#include <map>

#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/server/expected.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"
#include "tests/wine/support/type_library.h"

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

// The entry of an interface in the form of interface_table.txt; none for a class.
std::vector<std::string> entryOf(ITypeInfo* type) {
    const TYPEATTR attributes = attributesOf(type);
    const bool isDual = attributes.wTypeFlags & TYPEFLAG_FDUAL;
    const bool isPlain = attributes.typekind == TKIND_INTERFACE;
    const bool isEvents = attributes.typekind == TKIND_DISPATCH && !isDual;
    // The generator copies the one interface of the page classes into the library.
    if (nameOf(type) == "IUnknown" || !(isDual || isPlain || isEvents)) return {};
    const ComPtr<ITypeInfo> table = isDual ? implemented(type, -1) : type;
    const std::string base = isEvents ? "" : " : " + nameOf(implemented(table.Get(), 0).Get());
    std::vector<std::string> lines{(isDual    ? "dual "
                                    : isPlain ? "plain "
                                              : "events ") +
                                   explained(type) + base + " " + toText(attributes.guid)};
    forEachOwnMember(table.Get(), [&](ITypeInfo* declaredBy, const FUNCDESC& function) {
        const std::string slot = std::to_string(function.oVft / sizeof(void*)) + " ";
        lines.push_back("  " + (isEvents ? "" : slot) + kindOf(function.invkind) +
                        explained(declaredBy, function.memid) + " " +
                        std::to_string(function.memid));
    });
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
    TLIBATTR* attributes = nullptr;
    com::check(all->GetLibAttr(&attributes));
    std::vector<std::string> lines = {
        "library " + explained(all.Get()) + " " + toText(attributes->guid) + " " +
        std::to_string(attributes->wMajorVerNum) + "." + std::to_string(attributes->wMinorVerNum) +
        " " + std::to_string(attributes->lcid)};
    all->ReleaseTLibAttr(attributes);

    // Interfaces by name, events after them.
    std::map<std::pair<bool, std::string>, std::vector<std::string>> entries;
    for (const ComPtr<ITypeInfo>& type : libraryTypes()) {
        const std::vector<std::string> entry = entryOf(type.Get());
        if (entry.empty()) continue;
        entries[{entry[0].starts_with("events"), nameOf(type.Get())}] = entry;
    }
    for (const auto& [name, entry] : entries)
        lines.insert(lines.end(), entry.begin(), entry.end());
    EXPECT_EQ(joined(lines), joined(linesOf("interface_table.txt")));
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
        found[toText(attributes.guid)] = explained(type.Get()) +
                                         (isCreatable ? " " : " noncreatable ") +
                                         interfacesOf(type.Get());
    }
    EXPECT_EQ(found, expected);
}

}  // namespace
}  // namespace kel::test
