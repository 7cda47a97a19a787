#pragma once
// Values of automation: booleans, and a VARIANT that frees what it holds.

#include <windows.h>

#include <oleauto.h>

#include <concepts>
#include <string>
#include <string_view>

namespace kel::com {

inline VARIANT_BOOL variantBool(bool value) {
    return value ? VARIANT_TRUE : VARIANT_FALSE;
}

// Any non-zero value counts as true: hosts send 1 as well as -1.
inline bool isTrue(VARIANT_BOOL value) {
    return value != VARIANT_FALSE;
}

// Owns the contents of a VARIANT. Failures throw.
class Variant {
public:
    Variant() { VariantInit(&value_); }
    explicit Variant(long number);
    // Nothing else converts to it: a text given by its address is not a boolean.
    explicit Variant(std::same_as<bool> auto value) : Variant() {
        value_.vt = VT_BOOL;
        value_.boolVal = variantBool(value);
    }
    explicit Variant(std::wstring_view text);
    explicit Variant(std::string_view text);
    explicit Variant(IDispatch* object);

    // Copies a value that may be a reference to another; a reference is followed.
    explicit Variant(const VARIANT& value);

    Variant(const Variant& other) : Variant(other.value_) {}
    Variant(Variant&& other) noexcept;
    Variant& operator=(Variant other) noexcept;
    ~Variant() { VariantClear(&value_); }

    const VARIANT& get() const { return value_; }
    VARTYPE type() const { return value_.vt; }

    // Frees what is held and gives the place for an out parameter.
    VARIANT* put();

    // Hands the value to the caller, who clears it.
    [[nodiscard]] VARIANT release() noexcept;

    // The value converted to another type by the platform's rules, in the user's locale. Throws
    // when it cannot be converted.
    Variant convertedTo(VARTYPE type) const;

    // The value as a narrow text.
    std::string toText() const;

private:
    VARIANT value_;
};

}  // namespace kel::com
