#pragma once
// Conversion between the narrow texts used inside (the user's code page) and the texts of the
// border.

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <string_view>

namespace kel::com {

// Converts from a code page, the user's own by default. Invalid bytes become the platform's
// replacement character.
std::wstring widen(std::string_view text, UINT codePage = CP_ACP);

// Converts to a code page, the user's own by default. Characters outside it become its default
// character.
std::string narrow(std::wstring_view text, UINT codePage = CP_ACP);

// The characters of a text of the border, embedded NULs included; null is the empty text.
inline std::wstring_view view(BSTR text) {
    return text ? std::wstring_view(text, SysStringLen(text)) : std::wstring_view();
}

inline std::string narrow(BSTR text) {
    return narrow(view(text));
}

// Compares without regard to case, by the rules of no language.
bool sameName(std::wstring_view left, std::wstring_view right);

// The whole text of a window, or of a control.
std::wstring windowText(HWND window);

// As the registry spells it, in braces.
std::wstring guidText(const GUID& identifier);

// Owns a text of the border. A failing allocation throws std::bad_alloc.
class Bstr {
public:
    Bstr() = default;
    explicit Bstr(std::wstring_view text);
    explicit Bstr(std::string_view text, UINT codePage = CP_ACP);
    Bstr(const Bstr& other);
    Bstr(Bstr&& other) noexcept : text_(other.release()) {}
    Bstr& operator=(Bstr other) noexcept;
    ~Bstr() { SysFreeString(text_); }

    BSTR get() const { return text_; }
    std::wstring_view view() const { return com::view(text_); }

    // Frees what is held and gives the place for an out parameter.
    BSTR* put();

    // Hands the text to the caller, who frees it.
    [[nodiscard]] BSTR release() noexcept;

private:
    BSTR text_ = nullptr;
};

}  // namespace kel::com
