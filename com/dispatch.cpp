#include "com/dispatch.h"

#include <vector>

#include "com/error.h"
#include "com/stand_in.h"
#include "com/variant.h"

namespace kel::com {
namespace {

constexpr WORD kPuts = DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;

class FunctionDescription {
public:
    FunctionDescription(ITypeInfo* type, UINT index) : type_(type) {
        check(type->GetFuncDesc(index, &description_));
    }
    ~FunctionDescription() { type_->ReleaseFuncDesc(description_); }
    FunctionDescription(const FunctionDescription&) = delete;
    FunctionDescription& operator=(const FunctionDescription&) = delete;

    const FUNCDESC& operator*() const { return *description_; }
    const FUNCDESC* operator->() const { return description_; }

private:
    ITypeInfo* type_;
    FUNCDESC* description_ = nullptr;
};

UINT functionCount(ITypeInfo* type) {
    TYPEATTR* attributes = nullptr;
    check(type->GetTypeAttr(&attributes));
    const UINT count = attributes->cFuncs;
    type->ReleaseTypeAttr(attributes);
    return count;
}

// True when a named type is an interface, or another name of one, as that of the fonts.
bool isInterface(ITypeInfo* type, const TYPEDESC& named) {
    ComPtr<ITypeInfo> target;
    if (named.vt != VT_USERDEFINED || FAILED(type->GetRefTypeInfo(named.hreftype, &target)))
        return false;
    TYPEATTR* attributes = nullptr;
    if (FAILED(target->GetTypeAttr(&attributes))) return false;
    const TYPEKIND kind = attributes->typekind;
    const bool is = kind == TKIND_DISPATCH || kind == TKIND_INTERFACE ||
                    (kind == TKIND_ALIAS && isInterface(target.Get(), attributes->tdescAlias));
    target->ReleaseTypeAttr(attributes);
    return is;
}

// True when a parameter or a result is an object.
bool isObject(ITypeInfo* type, const TYPEDESC& parameter) {
    if (parameter.vt == VT_DISPATCH || parameter.vt == VT_UNKNOWN) return true;
    return parameter.vt == VT_PTR && isInterface(type, *parameter.lptdesc);
}

bool isNothing(const VARIANT& value) {
    return value.vt == VT_EMPTY || value.vt == VT_NULL ||
           (value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND);
}

// True for a property without parameters whose value is an object.
bool givesObject(ITypeInfo* type, const FUNCDESC& function) {
    if (function.invkind != INVOKE_PROPERTYGET) return false;
    if (function.cParams == 0) return isObject(type, function.elemdescFunc.tdesc);
    const ELEMDESC& result = function.lprgelemdescParam[0];
    return function.cParams == 1 && (result.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) &&
           isObject(type, *result.tdesc.lptdesc);
}

// More arguments than a function has parameters; platforms differ in whether they tell.
bool hasTooMany(const FUNCDESC& function, const DISPPARAMS& given) {
    if (function.cParamsOpt < 0) return false;
    UINT parameters = 0;
    for (SHORT i = 0; i < function.cParams; ++i) {
        const USHORT flags = function.lprgelemdescParam[i].paramdesc.wParamFlags;
        if (!(flags & PARAMFLAG_FRETVAL)) ++parameters;
    }
    return given.cArgs > parameters;
}

// The arguments of one call in the form that the type information accepts.
class Arguments {
public:
    Arguments(ITypeInfo* type, const FUNCDESC& function, const DISPPARAMS& given)
        : values_(given.cArgs), originals_(given.cArgs), given_(given) {
        for (UINT i = 0; i < given.cArgs; ++i) {
            values_[i] = given.rgvarg[i];
            const ELEMDESC* parameter = parameterOf(function, i);
            if (parameter) adapt(type, *parameter, i);
        }
    }

    DISPPARAMS parameters() {
        DISPPARAMS parameters = given_;
        parameters.rgvarg = values_.data();
        return parameters;
    }

    // Puts the results of out parameters back into the caller's variants.
    void giveBack() {
        for (const UINT argument : outs_) {
            VARIANT& target = *given_.rgvarg[argument].pvarVal;
            const VARIANT value = originals_[argument].release();
            VariantClear(&target);
            target = value;
        }
    }

private:
    // Arguments stand in reverse order; named ones (the value of a put is one) come first.
    const ELEMDESC* parameterOf(const FUNCDESC& function, UINT argument) const {
        if (argument < given_.cNamedArgs) {
            const DISPID name = given_.rgdispidNamedArgs[argument];
            if (name == DISPID_PROPERTYPUT) {
                return function.cParams > 0 ? &function.lprgelemdescParam[function.cParams - 1]
                                            : nullptr;
            }
            return name >= 0 && name < function.cParams ? &function.lprgelemdescParam[name]
                                                        : nullptr;
        }
        const UINT position = given_.cArgs - 1 - argument;
        return position < static_cast<UINT>(function.cParams)
                   ? &function.lprgelemdescParam[position]
                   : nullptr;
    }

    void adapt(ITypeInfo* type, const ELEMDESC& parameter, UINT i) {
        const bool isOut = parameter.paramdesc.wParamFlags & PARAMFLAG_FOUT;
        if (isOut) {
            if (values_[i].vt == (VT_BYREF | VT_VARIANT)) adaptOut(parameter.tdesc, i);
            return;
        }
        if (values_[i].vt & VT_BYREF) {
            originals_[i] = Variant(values_[i]);
            values_[i] = originals_[i].get();
        }
        if (!isObject(type, parameter.tdesc)) return;
        if (isNothing(values_[i])) {
            values_[i].vt = VT_DISPATCH;
            values_[i].pdispVal = nullptr;
        } else if (values_[i].vt == VT_DISPATCH && values_[i].pdispVal) {
            takeWhatItStandsFor(i);
        }
    }

    void takeWhatItStandsFor(UINT i) {
        ComPtr<IStandIn> standIn;
        if (FAILED(values_[i].pdispVal->QueryInterface(IID_PPV_ARGS(&standIn)))) return;
        originals_[i] = Variant(standIn->standsFor().Get());
        values_[i] = originals_[i].get();
    }

    // A reference to a VARIANT receives any type: give the member a value of its own type and hand
    // it over afterwards.
    void adaptOut(const TYPEDESC& type, UINT i) {
        if (type.vt != VT_PTR || type.lptdesc->vt == VT_VARIANT) return;
        const VARTYPE pointed = type.lptdesc->vt;
        const VARTYPE target = pointed == VT_PTR ? static_cast<VARTYPE>(VT_DISPATCH) : pointed;
        VARIANT* value = originals_[i].put();
        value->vt = target;
        value->llVal = 0;
        values_[i].vt = VT_BYREF | target;
        values_[i].byref = &value->llVal;
        outs_.push_back(i);
    }

    std::vector<VARIANT> values_;
    std::vector<Variant> originals_;
    std::vector<UINT> outs_;  // arguments that receive a result
    const DISPPARAMS& given_;
};

// The function that a call means, and the flags under which the type information finds it.
struct Target {
    UINT function;
    WORD flags;
};

// Prefers the way that the caller named. Where there is only that, takes the other way of putting,
// and reads a property that is called as a method.
bool findTarget(ITypeInfo* type, DISPID member, WORD flags, Target& target) {
    bool found = false;
    const UINT count = functionCount(type);
    for (UINT i = 0; i < count; ++i) {
        const FunctionDescription function(type, i);
        if (function->memid != member) continue;
        const WORD kind = static_cast<WORD>(function->invkind);
        if (kind & flags) {
            target = {i, kind};
            return true;
        }
        const bool otherPut = (kind & kPuts) && (flags & kPuts);
        const bool calledGet = kind == DISPATCH_PROPERTYGET && (flags & DISPATCH_METHOD);
        if (otherPut || calledGet) {
            target = {i, kind};
            found = true;
        }
    }
    return found;
}

// Arguments that a property does not take are meant for the default member of its value: scripts
// write list.Items(0).
HRESULT invokeDefault(ITypeInfo* type, void* object, DISPID member, const DISPPARAMS& arguments,
                      VARIANT* result, EXCEPINFO* exception, UINT* badArgument) {
    DISPPARAMS none = {};
    Variant value;
    const HRESULT code = type->Invoke(object, member, DISPATCH_PROPERTYGET, &none, value.put(),
                                      exception, badArgument);
    if (FAILED(code)) return code;
    if (value.type() != VT_DISPATCH || !value.get().pdispVal) return DISP_E_BADPARAMCOUNT;
    DISPPARAMS given = arguments;
    return value.get().pdispVal->Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT,
                                        DISPATCH_METHOD | DISPATCH_PROPERTYGET, &given, result,
                                        exception, badArgument);
}

}  // namespace

HRESULT invoke(ITypeInfo* type, void* object, DISPID member, WORD flags,
               const DISPPARAMS& arguments, VARIANT* result, EXCEPINFO* exception,
               UINT* badArgument) {
    Target target;
    if (!findTarget(type, member, flags, target)) return DISP_E_MEMBERNOTFOUND;

    const FunctionDescription function(type, target.function);
    if (hasTooMany(*function, arguments)) {
        if (!givesObject(type, *function)) return DISP_E_BADPARAMCOUNT;
        return invokeDefault(type, object, member, arguments, result, exception, badArgument);
    }
    Arguments adapted(type, *function, arguments);
    DISPPARAMS parameters = adapted.parameters();
    const HRESULT code =
        type->Invoke(object, member, target.flags, &parameters, result, exception, badArgument);
    if (SUCCEEDED(code)) adapted.giveBack();
    return code;
}

}  // namespace kel::com
