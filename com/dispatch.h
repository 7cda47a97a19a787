#pragma once
// Late-bound calls through the type library, tolerant of what script languages send.

#include <windows.h>

#include <oleauto.h>

namespace kel::com {

// Calls a member of a dual interface. Beyond what the type information does by itself:
// - a put of an object is the same as PUT or as PUTREF;
// - null, Nothing, Empty and a missing value stand for a null object;
// - arguments by reference are accepted where a value is expected, and a reference to a VARIANT
//   where an out parameter is expected;
// - the enumerator may be asked for as a method;
// - arguments that a property without parameters does not take go to the default member of the
//   object that it gives.
// Throws for failures of its own; gives the failure of the member as HRESULT, with the exception
// details filled.
HRESULT invoke(ITypeInfo* type, void* object, DISPID member, WORD flags,
               const DISPPARAMS& arguments, VARIANT* result, EXCEPINFO* exception,
               UINT* badArgument);

}  // namespace kel::com
