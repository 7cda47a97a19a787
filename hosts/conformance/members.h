#pragma once
// What type information tells, and calls to all of its members.

#include <windows.h>

#include <oleauto.h>

#include <functional>
#include <string>
#include <vector>

#include "com/error.h"

namespace kel::conformance {

// Without what its pointers point to.
TYPEATTR attributesOf(ITypeInfo* type);
std::string nameOf(ITypeInfo* type, MEMBERID member = MEMBERID_NIL);
com::ComPtr<ITypeInfo> implemented(ITypeInfo* type, UINT index);

// An interface and its bases, up to IDispatch or IUnknown. A dual one may be given as dispatch sees
// it.
std::vector<com::ComPtr<ITypeInfo>> levelsOf(com::ComPtr<ITypeInfo> type);

// Shows each member that an interface declares, or its bases as well, with the interface that
// declares it.
using Look = std::function<void(ITypeInfo* declaredBy, const FUNCDESC& member)>;
void forEachOwnMember(ITypeInfo* type, const Look& look);
void forEachMember(const com::ComPtr<ITypeInfo>& type, const Look& look);

// How a parameter is passed; pointers, enumerations and colours as numbers.
VARTYPE passedAs(const ELEMDESC& parameter);
bool isResult(const ELEMDESC& parameter);

// A call in the interface's own order, with zeros of the right size and a place for each result.
class ZeroCall {
public:
    explicit ZeroCall(const FUNCDESC& member);
    ~ZeroCall();
    ZeroCall(const ZeroCall&) = delete;
    ZeroCall& operator=(const ZeroCall&) = delete;

    void takePlace(std::size_t parameter) { values_[parameter].byref = nullptr; }

    // `object` is the interface itself, as its QueryInterface gives it.
    HRESULT operator()(IUnknown* object);

private:
    std::size_t count() const { return values_.size(); }
    const ELEMDESC& parameter(std::size_t i) const { return member_.lprgelemdescParam[i]; }

    const FUNCDESC& member_;
    std::vector<VARIANT> places_;
    std::vector<VARIANT> values_;
};

// Calls every member of a dual interface and its bases without a place for one of its results, for
// each, and shows what it answers; it should refuse.
using NullCall =
    std::function<void(ITypeInfo* declaredBy, const FUNCDESC& member, int parameter, HRESULT code)>;
void passNulls(IUnknown* object, const com::ComPtr<ITypeInfo>& type, const NullCall& look);

}  // namespace kel::conformance
