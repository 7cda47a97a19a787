#include "hosts/conformance/members.h"

#include "com/text.h"

namespace kel::conformance {
namespace {

// `place` holds the bare result, or a VARIANT where that is the result.
void free(VARTYPE type, VARIANT& place) {
    void* const pointer = *reinterpret_cast<void**>(&place);
    if (type == VT_VARIANT) VariantClear(&place);
    if (type == VT_BSTR) SysFreeString(static_cast<BSTR>(pointer));
    const bool isObject = type == VT_PTR || type == VT_DISPATCH || type == VT_UNKNOWN;
    if (isObject && pointer) static_cast<IUnknown*>(pointer)->Release();
}

}  // namespace

TYPEATTR attributesOf(ITypeInfo* type) {
    TYPEATTR* attributes = nullptr;
    com::check(type->GetTypeAttr(&attributes));
    const TYPEATTR copy = *attributes;
    type->ReleaseTypeAttr(attributes);
    return copy;
}

std::string nameOf(ITypeInfo* type, MEMBERID member) {
    com::Bstr name;
    com::check(type->GetDocumentation(member, name.put(), nullptr, nullptr, nullptr));
    return com::narrow(name.get());
}

com::ComPtr<ITypeInfo> implemented(ITypeInfo* type, UINT index) {
    HREFTYPE reference = 0;
    com::ComPtr<ITypeInfo> implemented;
    com::check(type->GetRefTypeOfImplType(index, &reference));
    com::check(type->GetRefTypeInfo(reference, &implemented));
    return implemented;
}

std::vector<com::ComPtr<ITypeInfo>> levelsOf(com::ComPtr<ITypeInfo> type) {
    std::vector<com::ComPtr<ITypeInfo>> levels;
    if (attributesOf(type.Get()).typekind == TKIND_DISPATCH)
        type = implemented(type.Get(), static_cast<UINT>(-1));
    for (;; type = implemented(type.Get(), 0)) {
        const GUID identifier = attributesOf(type.Get()).guid;
        if (identifier == IID_IDispatch || identifier == IID_IUnknown) return levels;
        levels.push_back(type);
    }
}

void forEachOwnMember(ITypeInfo* type, const Look& look) {
    for (UINT i = 0; i < attributesOf(type).cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        com::check(type->GetFuncDesc(i, &function));
        look(type, *function);
        type->ReleaseFuncDesc(function);
    }
}

void forEachMember(const com::ComPtr<ITypeInfo>& type, const Look& look) {
    for (const com::ComPtr<ITypeInfo>& level : levelsOf(type))
        forEachOwnMember(level.Get(), look);
}

VARTYPE passedAs(const ELEMDESC& parameter) {
    const VARTYPE type = parameter.tdesc.vt;
    return type == VT_PTR || type == VT_USERDEFINED ? VARTYPE{VT_I4} : type;
}

bool isResult(const ELEMDESC& parameter) {
    return parameter.paramdesc.wParamFlags & PARAMFLAG_FOUT;
}

ZeroCall::ZeroCall(const FUNCDESC& member)
    : member_(member), places_(static_cast<std::size_t>(member.cParams)), values_(places_.size()) {
    for (std::size_t i = 0; i < count(); ++i)
        if (isResult(parameter(i))) values_[i].byref = &places_[i];
}

ZeroCall::~ZeroCall() {
    for (std::size_t i = 0; i < count(); ++i)
        if (isResult(parameter(i))) free(parameter(i).tdesc.lptdesc->vt, places_[i]);
}

HRESULT ZeroCall::operator()(IUnknown* object) {
    std::vector<VARTYPE> types;
    std::vector<VARIANT*> arguments;
    for (std::size_t i = 0; i < count(); ++i) {
        types.push_back(passedAs(parameter(i)));
        arguments.push_back(&values_[i]);
    }
    VARIANT code{};
    com::check(DispCallFunc(object, member_.oVft, CC_STDCALL, VT_ERROR, member_.cParams,
                            types.data(), arguments.data(), &code));
    return code.scode;
}

void passNulls(IUnknown* object, const com::ComPtr<ITypeInfo>& type, const NullCall& look) {
    forEachMember(type, [&](ITypeInfo* declaredBy, const FUNCDESC& member) {
        for (int missing = 0; missing < member.cParams; ++missing) {
            if (!isResult(member.lprgelemdescParam[missing])) continue;
            ZeroCall call(member);
            call.takePlace(static_cast<std::size_t>(missing));
            look(declaredBy, member, missing, call(object));
        }
    });
}

}  // namespace kel::conformance
