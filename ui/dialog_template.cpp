#include "ui/dialog_template.h"

#include <cstring>
#include <stdexcept>

namespace kel::ui {
namespace {

constexpr WORD kExtendedVersion = 1;
constexpr WORD kExtendedSignature = 0xFFFF;
constexpr DWORD kNoHelp = 0;
constexpr std::size_t kCountOffset = 16;
constexpr BYTE kNotItalic = 0;

}  // namespace

DialogTemplate::DialogTemplate(std::wstring_view title, short width, short height, DWORD style,
                               DWORD extendedStyle) {
    appendNumber(kExtendedVersion);
    appendNumber(kExtendedSignature);
    appendNumber(kNoHelp);
    appendNumber(extendedStyle);
    appendNumber(style | DS_SHELLFONT);
    appendNumber(WORD{0});
    appendPlace({0, 0, width, height});
    appendNumber(WORD{0});  // no menu
    appendNumber(WORD{0});  // the dialog's own class
    appendText(title);
    appendNumber(kFontPoints);
    appendNumber(WORD{FW_NORMAL});
    append(&kNotItalic, 1);
    const BYTE characterSet = DEFAULT_CHARSET;
    append(&characterSet, 1);
    appendText(kFontName);
}

void DialogTemplate::add(const ControlDescription& control) {
    align();
    appendNumber(kNoHelp);
    appendNumber(control.extendedStyle);
    appendNumber(control.style);
    appendPlace(control.place);
    appendNumber(DWORD{control.identifier});
    appendText(control.windowClass);
    appendText(control.text);
    appendNumber(WORD{0});  // no creation data

    auto* count = reinterpret_cast<WORD*>(reinterpret_cast<BYTE*>(words_.data()) + kCountOffset);
    if (*count == 0xFFFF) throw std::length_error("too many controls for one dialog");
    ++*count;
}

const DLGTEMPLATE* DialogTemplate::get() const {
    return reinterpret_cast<const DLGTEMPLATE*>(words_.data());
}

void DialogTemplate::append(const void* bytes, std::size_t count) {
    words_.resize((size_ + count + sizeof(DWORD) - 1) / sizeof(DWORD));
    std::memcpy(reinterpret_cast<BYTE*>(words_.data()) + size_, bytes, count);
    size_ += count;
}

// A text ends at its first NUL, also for the platform.
void DialogTemplate::appendText(std::wstring_view text) {
    text = text.substr(0, text.find(L'\0'));
    append(text.data(), text.size() * sizeof(wchar_t));
    appendNumber(WORD{0});
}

void DialogTemplate::appendPlace(const UnitRectangle& place) {
    append(&place, sizeof place);
}

void DialogTemplate::align() {
    size_ = (size_ + sizeof(DWORD) - 1) / sizeof(DWORD) * sizeof(DWORD);
}

}  // namespace kel::ui
