#pragma once
// Fonts as controls have them: objects that tell of their changes.

#include <windows.h>

#include <ocidl.h>
#include <olectl.h>

#include <functional>
#include <string>

#include "com/error.h"

namespace kel::ole {

struct FontData {
    std::wstring name;
    LONGLONG size = 0;  // in ten thousandths of a point
    SHORT weight = FW_NORMAL;
    SHORT characterSet = 0;
    bool isItalic = false;
    bool isUnderlined = false;
    bool isStruckOut = false;
};

// Throws com::Error.
com::ComPtr<IFontDisp> makeFont(const FontData& data);
FontData fontData(IFontDisp* font);

// What a window draws with: a font handle that stays valid as long as this lives, also when the
// font changes. Throws com::Error.
class FontHandle {
public:
    FontHandle() = default;
    explicit FontHandle(IFontDisp* font);
    FontHandle(FontHandle&& other) noexcept;
    FontHandle& operator=(FontHandle other) noexcept;
    ~FontHandle();

    HFONT get() const { return handle_; }

private:
    com::ComPtr<IFont> font_;
    HFONT handle_ = nullptr;
};

// Watches a font as long as it lives: calls a function when the font has changed, and does nothing
// for a font that tells nobody. Does not keep the watcher's owner alive. Throws com::Error.
class FontWatch {
public:
    FontWatch(IFontDisp* font, std::function<void()> changed);
    ~FontWatch();
    FontWatch(const FontWatch&) = delete;
    FontWatch& operator=(const FontWatch&) = delete;

private:
    class Sink;

    com::ComPtr<IConnectionPoint> point_;
    com::ComPtr<Sink> sink_;
    DWORD cookie_ = 0;
};

}  // namespace kel::ole
