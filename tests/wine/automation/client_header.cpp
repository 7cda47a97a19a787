// Writes a C++ header from the type library that is built into the library, and from nothing else:
// enumerations, interfaces with their members as they stand and as smart pointers call them,
// classes. Usage: kel_client_header FILE
#include <fstream>
#include <set>
#include <sstream>

#include "com/text.h"
#include "tests/wine/support/type_library.h"

namespace kel::test {
namespace {

std::string typeText(ITypeInfo* type, const TYPEDESC& described) {
    switch (described.vt) {
        case VT_PTR:
            return typeText(type, *described.lptdesc) + "*";
        case VT_USERDEFINED: {
            com::ComPtr<ITypeInfo> target;
            com::check(type->GetRefTypeInfo(described.hreftype, &target));
            return nameOf(target.Get());
        }
        case VT_UI1:
            return "unsigned char";
        case VT_INT:
            return "int";
        case VT_I4:
            return "long";
        case VT_UI4:
            return "unsigned long";
        case VT_I8:
            return "__int64";
        case VT_R8:
            return "double";
        case VT_DATE:
            return "DATE";
        case VT_BOOL:
            return "VARIANT_BOOL";
        case VT_BSTR:
            return "BSTR";
        case VT_VARIANT:
            return "VARIANT";
        case VT_DISPATCH:
            return "IDispatch*";
        case VT_UNKNOWN:
            return "IUnknown*";
        default:
            throw com::Error(E_NOTIMPL, L"a type that the header cannot tell");
    }
}

// What a call gives to C++: texts, values and objects as their owners.
std::string ownerOf(const std::string& result) {
    if (result == "BSTR") return "_bstr_t";
    if (result == "VARIANT") return "_variant_t";
    return result.ends_with("*") ? result.substr(0, result.size() - 1) + "Ptr" : result;
}

std::string prefixOf(INVOKEKIND kind, bool isRaw) {
    if (kind == INVOKE_FUNC) return "";
    const std::string name = kindOf(kind).substr(0, kindOf(kind).size() - 1);
    if (isRaw) return name + "_";
    return std::string{static_cast<char>(std::toupper(name[0]))} + name.substr(1);
}

void writeMember(std::ostream& out, ITypeInfo* type, const FUNCDESC& function) {
    const std::string name = nameOf(type, function.memid);
    std::string parameters, given, passed, result;
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        const std::string text = typeText(type, parameter.tdesc);
        const std::string argument = "a" + std::to_string(i);
        const std::string comma = i > 0 ? ", " : "";
        parameters += comma + text + " " + argument;
        if (parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) {
            result = text.substr(0, text.size() - 1);
            passed += comma + "&result";
        } else {
            given += comma + text + " " + argument;
            passed += comma + argument;
        }
    }
    const std::string raw = "raw_" + prefixOf(function.invkind, true) + name;
    out << "    virtual HRESULT __stdcall " << raw << "(" << parameters << ") = 0;\n";
    const bool isOwned = !result.empty() && ownerOf(result) != result;
    out << "    " << (result.empty() ? "void" : ownerOf(result)) << " "
        << prefixOf(function.invkind, false) << name << "(" << given << ") {\n";
    if (!result.empty()) out << "        " << result << " result{};\n";
    out << "        check(" << raw << "(" << passed << "), this);\n";
    if (!result.empty())
        out << "        return " << (isOwned ? ownerOf(result) + "(result, false)" : "result")
            << ";\n";
    out << "    }\n";
}

// The identifier of a type as the compiler takes it.
void writeIdentifier(std::ostream& out, const std::string& name, const GUID& id) {
    char text[200];
    std::snprintf(text, sizeof text, "0x%08lx, 0x%04x, 0x%04x", id.Data1, id.Data2, id.Data3);
    out << "__CRT_UUID_DECL(KELUTILSLib::" << name << ", " << text;
    for (const unsigned char byte : id.Data4) {
        std::snprintf(text, sizeof text, ", 0x%02x", byte);
        out << text;
    }
    out << ")\n";
}

class Header {
public:
    explicit Header(std::ostream& out) : out_(out) {}

    void write() {
        out_ << "#pragma once\n#include <windows.h>\n#include <ocidl.h>\n#include <comdef.h>\n"
                "namespace KELUTILSLib {\n";
        for (const auto& type : libraryTypes()) {
            const TYPEATTR attributes = attributesOf(type.Get());
            const bool isDual = attributes.wTypeFlags & TYPEFLAG_FDUAL;
            const bool isInterface = attributes.typekind == TKIND_INTERFACE || isDual;
            if (nameOf(type.Get()) == "IUnknown") continue;
            if (attributes.typekind == TKIND_ENUM) writeEnumeration(type.Get());
            if (isInterface) interfaces_.push_back(levelsOf(type).front());
            if (isInterface || attributes.typekind == TKIND_COCLASS) declare(type.Get());
        }
        out_ << "}\n" << identifiers_.str() << "namespace KELUTILSLib {\n";
        for (const char* name : {"IUnknown", "IDispatch", "IFontDisp"})
            writePointer(name);
        for (const auto& type : interfaces_)
            writePointer(nameOf(type.Get()));
        out_ << "template <class Interface> void check(HRESULT code, Interface* object) {\n"
                "    if (SUCCEEDED(code)) return;\n"
                "    ISupportErrorInfo* support = nullptr;\n    IErrorInfo* info = nullptr;\n"
                "    object->QueryInterface(IID_ISupportErrorInfo, (void**)&support);\n"
                "    if (support && support->InterfaceSupportsErrorInfo(__uuidof(Interface)) == "
                "S_OK)\n        GetErrorInfo(0, &info);\n"
                "    if (support) support->Release();\n    throw _com_error(code, info);\n}\n";
        for (const auto& type : interfaces_)
            writeInterface(type);
        out_ << "}\n";
    }

private:
    void writePointer(const std::string& name) {
        out_ << "using " << name << "Ptr = _com_ptr_t<_com_IIID<" << name << ", &__uuidof(" << name
             << ")>>;\n";
    }

    void declare(ITypeInfo* type) {
        out_ << "struct " << nameOf(type) << ";\n";
        writeIdentifier(identifiers_, nameOf(type), attributesOf(type).guid);
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

    // Its base comes first.
    void writeInterface(const com::ComPtr<ITypeInfo>& type) {
        if (!written_.insert(nameOf(type.Get())).second) return;
        const auto levels = levelsOf(type);
        if (levels.size() > 1) writeInterface(levels[1]);
        out_ << "struct " << nameOf(type.Get()) << " : " << nameOf(implemented(type.Get(), 0).Get())
             << " {\n";
        for (UINT i = 0; i < attributesOf(type.Get()).cFuncs; ++i) {
            FUNCDESC* function = nullptr;
            com::check(type->GetFuncDesc(i, &function));
            writeMember(out_, type.Get(), *function);
            type->ReleaseFuncDesc(function);
        }
        out_ << "};\n";
    }

    std::ostream& out_;
    std::ostringstream identifiers_;
    std::vector<com::ComPtr<ITypeInfo>> interfaces_;
    std::set<std::string> written_;
};

}  // namespace
}  // namespace kel::test

int main(int count, char** arguments) {
    if (count != 2 || FAILED(OleInitialize(nullptr))) return 70;
    std::ofstream out(arguments[1]);
    try {
        kel::test::Header(out).write();
    } catch (const kel::com::Error& error) {
        std::fprintf(stderr, "0x%08lx %ls\n", error.code(), error.description().c_str());
        return 1;
    }
    return out.flush() ? 0 : 1;
}
