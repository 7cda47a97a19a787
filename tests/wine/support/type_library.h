#pragma once
// What type information tells, for tests that go over all of it.

#include "hosts/conformance/members.h"

namespace kel::test {

using namespace conformance;

// "get ", "put ", "putref " or "call ".
std::string kindOf(INVOKEKIND kind);

// The type that a parameter passes, or points to; null unless it has a name.
com::ComPtr<ITypeInfo> namedType(ITypeInfo* declaredBy, const TYPEDESC& passed);

// All types of the library under test.
std::vector<com::ComPtr<ITypeInfo>> libraryTypes();

}  // namespace kel::test
