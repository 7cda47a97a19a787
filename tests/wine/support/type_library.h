#pragma once
// What type information tells, for tests that go over all of it.

#include <windows.h>

#include <oleauto.h>

#include <functional>
#include <string>
#include <vector>

#include "com/error.h"

namespace kel::test {

// Without what its pointers point to.
TYPEATTR attributesOf(ITypeInfo* type);
std::string nameOf(ITypeInfo* type, MEMBERID member = MEMBERID_NIL);
com::ComPtr<ITypeInfo> implemented(ITypeInfo* type, UINT index);

// "get ", "put ", "putref " or "call ".
std::string kindOf(INVOKEKIND kind);

// All types of the library under test.
std::vector<com::ComPtr<ITypeInfo>> libraryTypes();

// An interface and its bases, up to IDispatch or IUnknown. A dual one may be given as dispatch sees
// it.
std::vector<com::ComPtr<ITypeInfo>> levelsOf(com::ComPtr<ITypeInfo> type);

// Shows each member of an interface and its bases, with the interface that declares it.
using Look = std::function<void(ITypeInfo* declaredBy, const FUNCDESC& member)>;
void forEachMember(const com::ComPtr<ITypeInfo>& type, const Look& look);

}  // namespace kel::test
