#pragma once
// Members of an object of another library, called by their names, as scripts do.

#include <windows.h>

#include <oleauto.h>

#include <initializer_list>
#include <string>

#include "com/error.h"
#include "com/variant.h"

namespace kel::com {

// Every member throws Error: with the object's own description where it gives one.
class LateBound {
public:
    explicit LateBound(ComPtr<IDispatch> object) : object_(std::move(object)) {}

    const ComPtr<IDispatch>& object() const { return object_; }

    Variant get(const wchar_t* name) const { return invoke(name, DISPATCH_PROPERTYGET, {}); }
    void put(const wchar_t* name, const Variant& value) const {
        invoke(name, DISPATCH_PROPERTYPUT, {value});
    }
    Variant call(const wchar_t* name, std::initializer_list<Variant> arguments = {}) const {
        return invoke(name, DISPATCH_METHOD, arguments);
    }

    // The object itself, which is a function.
    Variant callItself(std::initializer_list<Variant> arguments) const {
        return invokeMember(DISPID_VALUE, DISPATCH_METHOD, arguments);
    }

private:
    Variant invoke(const wchar_t* name, WORD kind, std::initializer_list<Variant> arguments) const;
    Variant invokeMember(DISPID member, WORD kind, std::initializer_list<Variant> arguments) const;

    ComPtr<IDispatch> object_;
};

}  // namespace kel::com
