#include "com/text.h"

#include <iterator>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace kel::com {
namespace {

// The conversion functions count in int.
int countOf(std::size_t size) {
    if (size > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw std::length_error("Text is too long");
    }
    return static_cast<int>(size);
}

BSTR allocate(const wchar_t* text, std::size_t size) {
    BSTR copy = SysAllocStringLen(text, static_cast<UINT>(countOf(size)));
    if (!copy) throw std::bad_alloc();
    return copy;
}

}  // namespace

std::wstring widen(std::string_view text, UINT codePage) {
    if (text.empty()) return {};
    const int size = countOf(text.size());
    std::wstring wide(MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string narrow(std::wstring_view text, UINT codePage) {
    if (text.empty()) return {};
    const int size = countOf(text.size());
    // Else a character that only looks like a quote would become one, and end a text. In UTF-8
    // there is room for all, and no choice.
    const UINT page = codePage == CP_ACP ? GetACP() : codePage;
    const DWORD flags = page == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS;
    std::string bytes(
        WideCharToMultiByte(page, flags, text.data(), size, nullptr, 0, nullptr, nullptr), '\0');
    WideCharToMultiByte(page, flags, text.data(), size, bytes.data(),
                        static_cast<int>(bytes.size()), nullptr, nullptr);
    return bytes;
}

bool sameName(std::wstring_view left, std::wstring_view right) {
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

std::wstring windowText(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(
        GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

std::wstring guidText(const GUID& identifier) {
    wchar_t text[39];
    StringFromGUID2(identifier, text, static_cast<int>(std::size(text)));
    return text;
}

Bstr::Bstr(std::wstring_view text) : text_(allocate(text.data(), text.size())) {}

Bstr::Bstr(std::string_view text, UINT codePage) : Bstr(widen(text, codePage)) {}

Bstr::Bstr(const Bstr& other)
    : text_(other.text_ ? allocate(other.text_, SysStringLen(other.text_)) : nullptr) {}

Bstr& Bstr::operator=(Bstr other) noexcept {
    std::swap(text_, other.text_);
    return *this;
}

BSTR* Bstr::put() {
    SysFreeString(text_);
    text_ = nullptr;
    return &text_;
}

BSTR Bstr::release() noexcept {
    return std::exchange(text_, nullptr);
}

}  // namespace kel::com
