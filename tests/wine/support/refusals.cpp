#include "tests/wine/support/refusals.h"

#include <gtest/gtest.h>

#include <vector>

#include "com/text.h"
#include "tests/wine/support/late_bound.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/type_library.h"

namespace kel::test {
namespace {

// The same call late-bound: it fails with the same code, tells why, and leaves nothing behind.
void expectToldLateBound(IDispatch* object, const FUNCDESC& function, HRESULT code,
                         std::wstring_view source) {
    std::vector<VARIANT> arguments;
    for (SHORT i = function.cParams; i-- > 0;) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        VARIANT value{};
        value.vt = parameter.tdesc.vt == VT_PTR ? VARTYPE{VT_DISPATCH} : passedAs(parameter);
        if (value.vt == VT_VARIANT) value.vt = VT_EMPTY;
        if (!isResult(parameter)) arguments.push_back(value);
    }
    const Outcome told =
        invoke(object, function.memid, static_cast<WORD>(function.invkind), std::move(arguments));
    EXPECT_EQ(told.code, code);
    EXPECT_EQ(told.source, com::narrow(source));
    EXPECT_NE(told.reason, "");
    EXPECT_FALSE(takeError()) << "an error is left behind";
}

com::ComPtr<ITypeInfo> typeOf(IDispatch* object) {
    com::ComPtr<ITypeInfo> type;
    com::check(object->GetTypeInfo(0, 0, &type));
    return type;
}

}  // namespace

void expectTold(std::wstring_view source, const IID& interfaceId) {
    const auto told = takeError();
    ASSERT_TRUE(told) << "no error info";
    EXPECT_NE(told->description, L"");
    if (source.empty()) return;
    EXPECT_EQ(told->source, source);
    EXPECT_EQ(told->interfaceId, interfaceId);
}

void expectNullPointersRefused(IDispatch* object, std::wstring_view source) {
    passNulls(object, typeOf(object),
              [&](ITypeInfo* declaredBy, const FUNCDESC& function, int parameter, HRESULT code) {
                  SCOPED_TRACE(kindOf(function.invkind) + nameOf(declaredBy, function.memid));
                  EXPECT_EQ(code, E_POINTER) << "parameter " << parameter;
                  expectTold(source, attributesOf(declaredBy).guid);
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
