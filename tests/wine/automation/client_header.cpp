// Writes a C++ header from the type library that is built into the library, and from nothing else:
// enumerations, classes, interfaces with their members, and pointers to them. Usage:
// kel_client_header FILE
#include <fstream>
#include <map>
#include <vector>

#include "com/text.h"
#include "tests/wine/support/type_library.h"

namespace kel::test {
namespace {

std::string typeText(ITypeInfo* type, const TYPEDESC& described) {
    static const std::map<VARTYPE, const char*> known = {{VT_UI1, "unsigned char"},
                                                         {VT_INT, "int"},
                                                         {VT_I4, "long"},
                                                         {VT_UI4, "unsigned long"},
                                                         {VT_I8, "__int64"},
                                                         {VT_R8, "double"},
                                                         {VT_DATE, "DATE"},
                                                         {VT_BOOL, "VARIANT_BOOL"},
                                                         {VT_BSTR, "BSTR"},
                                                         {VT_VARIANT, "VARIANT"},
                                                         {VT_DISPATCH, "IDispatch*"},
                                                         {VT_UNKNOWN, "IUnknown*"}};
    if (described.vt == VT_PTR) return typeText(type, *described.lptdesc) + "*";
    if (described.vt == VT_USERDEFINED) return nameOf(namedType(type, described).Get());
    return known.at(described.vt);
}

class Header {
public:
    explicit Header(std::ostream& out) : out_(out) {}

    void write() {
        out_ << "#pragma once\n#include <windows.h>\n#include <ocidl.h>\n#include <comdef.h>\n";
        std::vector<com::ComPtr<ITypeInfo>> interfaces;
        for (const auto& type : libraryTypes()) {
            const TYPEATTR attributes = attributesOf(type.Get());
            const bool isDual = attributes.wTypeFlags & TYPEFLAG_FDUAL;
            const bool isInterface = attributes.typekind == TKIND_INTERFACE || isDual;
            if (nameOf(type.Get()) == "IUnknown") continue;
            if (attributes.typekind == TKIND_ENUM) writeEnumeration(type.Get());
            if (isInterface) interfaces.push_back(levelsOf(type).front());
            if (isInterface || attributes.typekind == TKIND_COCLASS) declare(type.Get());
        }
        // A base comes before those that derive from it.
        for (const auto& type : interfaces)
            writeInterface(type.Get());
    }

private:
    void declare(ITypeInfo* type) {
        const GUID id = attributesOf(type).guid;
        char text[100];
        std::snprintf(text, sizeof text, "0x%08lx, 0x%04x, 0x%04x", id.Data1, id.Data2, id.Data3);
        out_ << "struct " << nameOf(type) << ";\n__CRT_UUID_DECL(" << nameOf(type) << ", " << text;
        for (const int byte : id.Data4)
            out_ << ", " << byte;
        out_ << ")\n";
    }

    void writeEnumeration(ITypeInfo* type) {
        out_ << "enum " << nameOf(type) << " {";
        for (UINT i = 0; i < attributesOf(type).cVars; ++i) {
            VARDESC* variable = nullptr;
            com::check(type->GetVarDesc(i, &variable));
            out_ << " " << nameOf(type, variable->memid) << " = " << variable->lpvarValue->lVal
                 << ",";
            type->ReleaseVarDesc(variable);
        }
        out_ << " };\n";
    }

    void writeInterface(ITypeInfo* type) {
        const std::string name = nameOf(type);
        out_ << "struct " << name << " : " << nameOf(implemented(type, 0).Get()) << " {\n";
        forEachOwnMember(type, [&](ITypeInfo*, const FUNCDESC& function) {
            const std::string kind = kindOf(function.invkind);
            out_ << "    virtual HRESULT __stdcall "
                 << (kind == "call " ? "" : kind.substr(0, kind.size() - 1) + "_")
                 << nameOf(type, function.memid) << "(";
            for (SHORT i = 0; i < function.cParams; ++i)
                out_ << (i > 0 ? ", " : "") << typeText(type, function.lprgelemdescParam[i].tdesc);
            out_ << ") = 0;\n";
        });
        out_ << "};\n_COM_SMARTPTR_TYPEDEF(" << name << ", __uuidof(" << name << "));\n";
    }

    std::ostream& out_;
};

}  // namespace
}  // namespace kel::test

int main(int count, char** arguments) {
    if (count != 2 || FAILED(OleInitialize(nullptr))) return 70;
    std::ofstream out(arguments[1]);
    kel::test::Header(out).write();
    return out.flush() ? 0 : 1;
}
