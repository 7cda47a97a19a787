#include "com/variant.h"

#include <utility>

#include "com/error.h"
#include "com/text.h"

namespace kel::com {

Variant::Variant(long number) : Variant() {
    value_.vt = VT_I4;
    value_.lVal = number;
}

Variant::Variant(std::wstring_view text) : Variant() {
    value_.bstrVal = Bstr(text).release();
    value_.vt = VT_BSTR;
}

Variant::Variant(std::string_view text) : Variant(std::wstring_view(widen(text))) {}

Variant::Variant(IDispatch* object) : Variant() {
    value_.vt = VT_DISPATCH;
    value_.pdispVal = object;
    if (object) object->AddRef();
}

// The platform's functions do not change their source, though they take it as if they did.
Variant::Variant(const VARIANT& value) : Variant() {
    check(VariantCopyInd(&value_, const_cast<VARIANT*>(&value)));
}

Variant::Variant(Variant&& other) noexcept : value_(other.release()) {}

Variant& Variant::operator=(Variant other) noexcept {
    std::swap(value_, other.value_);
    return *this;
}

VARIANT* Variant::put() {
    VariantClear(&value_);
    return &value_;
}

VARIANT Variant::release() noexcept {
    VARIANT value = value_;
    VariantInit(&value_);
    return value;
}

Variant Variant::convertedTo(VARTYPE type) const {
    Variant converted;
    check(VariantChangeType(&converted.value_, const_cast<VARIANT*>(&value_), VARIANT_ALPHABOOL,
                            type));
    return converted;
}

std::string Variant::toText() const {
    if (value_.vt == VT_BSTR) return narrow(value_.bstrVal);
    if (value_.vt == VT_EMPTY || value_.vt == VT_NULL) return {};
    const Variant text = convertedTo(VT_BSTR);
    return narrow(text.value_.bstrVal);
}

}  // namespace kel::com
