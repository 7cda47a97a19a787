#include "tests/wine/support/refusals.h"

#include <gtest/gtest.h>

#include <vector>

#include "com/text.h"
#include "com/variant.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/type_library.h"

namespace kel::test {
namespace {

bool isResult(const ELEMDESC& parameter) {
    return parameter.paramdesc.wParamFlags & PARAMFLAG_FOUT;
}

// How a parameter is passed; pointers, enumerations and colours as numbers.
VARTYPE typeOf(const ELEMDESC& parameter) {
    const VARTYPE type = parameter.tdesc.vt;
    return type == VT_PTR || type == VT_USERDEFINED ? VARTYPE{VT_I4} : type;
}

// A call in the interface's own order, with zeros of the right size.
class ZeroCall {
public:
    explicit ZeroCall(const FUNCDESC& function)
        : function_(function), places_(count()), values_(count()) {
        for (std::size_t i = 0; i < count(); ++i)
            if (isResult(parameter(i))) values_[i].byref = &places_[i].value;
    }
    ~ZeroCall() {
        for (std::size_t i = 0; i < count(); ++i)
            if (isResult(parameter(i))) free(parameter(i).tdesc.lptdesc->vt, places_[i].value);
    }

    std::size_t count() const { return static_cast<std::size_t>(function_.cParams); }
    const ELEMDESC& parameter(std::size_t i) const { return function_.lprgelemdescParam[i]; }
    void takePlace(std::size_t i) { values_[i].byref = nullptr; }

    HRESULT operator()(IDispatch* object) {
        std::vector<VARTYPE> types;
        std::vector<VARIANT*> arguments;
        for (std::size_t i = 0; i < count(); ++i) {
            types.push_back(typeOf(parameter(i)));
            arguments.push_back(&values_[i]);
        }
        VARIANT code{};
        EXPECT_EQ(DispCallFunc(object, function_.oVft, CC_STDCALL, VT_ERROR, function_.cParams,
                               types.data(), arguments.data(), &code),
                  S_OK);
        return code.scode;
    }

private:
    struct Place {
        VARIANT value{};
    };

    // `place` holds the bare result, or a VARIANT where that is the result.
    static void free(VARTYPE type, VARIANT& place) {
        void* const pointer = *reinterpret_cast<void**>(&place);
        if (type == VT_VARIANT) VariantClear(&place);
        if (type == VT_BSTR) SysFreeString(static_cast<BSTR>(pointer));
        const bool isObject = type == VT_PTR || type == VT_DISPATCH || type == VT_UNKNOWN;
        if (isObject && pointer) static_cast<IUnknown*>(pointer)->Release();
    }

    const FUNCDESC& function_;
    std::vector<Place> places_;
    std::vector<VARIANT> values_;
};

void expectTold(std::wstring_view source, const IID& interfaceId) {
    const auto told = takeError();
    ASSERT_TRUE(told) << "no error info";
    EXPECT_NE(told->description, L"");
    if (source.empty()) return;
    EXPECT_EQ(told->source, source);
    EXPECT_EQ(told->interfaceId, interfaceId);
}

// The same call late-bound: it fails with the same code, tells why, and leaves nothing behind.
void expectToldLateBound(IDispatch* object, const FUNCDESC& function, HRESULT code,
                         std::wstring_view source) {
    std::vector<VARIANT> arguments;
    for (SHORT i = function.cParams; i-- > 0;) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        VARIANT value{};
        value.vt = parameter.tdesc.vt == VT_PTR ? VARTYPE{VT_DISPATCH} : typeOf(parameter);
        if (value.vt == VT_VARIANT) value.vt = VT_EMPTY;
        if (!isResult(parameter)) arguments.push_back(value);
    }
    const bool isPut = function.invkind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF);
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{arguments.data(), isPut ? &put : nullptr,
                          static_cast<UINT>(arguments.size()), isPut ? 1u : 0u};
    EXCEPINFO told{};
    com::Variant result;
    EXPECT_EQ(object->Invoke(function.memid, IID_NULL, 0, static_cast<WORD>(function.invkind),
                             &parameters, isPut ? nullptr : result.put(), &told, nullptr),
              DISP_E_EXCEPTION);
    EXPECT_EQ(told.scode, code);
    EXPECT_EQ(com::view(told.bstrSource), source);
    EXPECT_NE(com::view(told.bstrDescription), L"");
    EXPECT_FALSE(takeError()) << "an error is left behind";
    for (const BSTR text : {told.bstrSource, told.bstrDescription, told.bstrHelpFile})
        SysFreeString(text);
}

com::ComPtr<ITypeInfo> typeOf(IDispatch* object) {
    com::ComPtr<ITypeInfo> type;
    com::check(object->GetTypeInfo(0, 0, &type));
    return type;
}

}  // namespace

void expectNullPointersRefused(IDispatch* object, std::wstring_view source) {
    forEachMember(typeOf(object), [&](ITypeInfo* declaredBy, const FUNCDESC& function) {
        const ZeroCall complete(function);
        for (std::size_t missing = 0; missing < complete.count(); ++missing) {
            if (!isResult(complete.parameter(missing))) continue;
            SCOPED_TRACE(kindOf(function.invkind) + nameOf(declaredBy, function.memid));
            ZeroCall call(function);
            call.takePlace(missing);
            EXPECT_EQ(call(object), E_POINTER) << "parameter " << missing;
            expectTold(source, attributesOf(declaredBy).guid);
        }
    });
}

void expectFailuresExplained(IDispatch* object, std::wstring_view source, std::string_view except) {
    forEachMember(typeOf(object), [&](ITypeInfo* declaredBy, const FUNCDESC& function) {
        const std::string name = nameOf(declaredBy, function.memid);
        if (name == except) return;
        SCOPED_TRACE(kindOf(function.invkind) + name);
        ZeroCall call(function);
        const HRESULT code = call(object);
        if (SUCCEEDED(code)) return;
        expectTold(source, attributesOf(declaredBy).guid);
        expectToldLateBound(object, function, code, source);
    });
}

}  // namespace kel::test
