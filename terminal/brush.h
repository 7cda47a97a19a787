#pragma once
// Brushes and the colours of containers.

#include <windows.h>

#include <olectl.h>

#include "com/error.h"
#include "com/unique_handle.h"

namespace kel::terminal {

struct BrushTraits {
    using Type = HBRUSH;
    static Type none() { return nullptr; }
    static void close(Type brush) { DeleteObject(brush); }
};

// Throws com::Error for a number that is no colour.
inline COLORREF translated(OLE_COLOR colour) {
    COLORREF translated = 0;
    com::check(OleTranslateColor(colour, nullptr, &translated));
    return translated;
}

inline bool isColour(OLE_COLOR colour) {
    return SUCCEEDED(OleTranslateColor(colour, nullptr, nullptr));
}

// A colour with the brush that fills with it.
class Brush {
public:
    explicit Brush(OLE_COLOR colour = 0)
        : colour_(translated(colour)), brush_(CreateSolidBrush(colour_)) {
        if (!brush_) throw com::Error(E_OUTOFMEMORY);
    }

    COLORREF colour() const { return colour_; }
    HBRUSH get() const { return brush_.get(); }

private:
    COLORREF colour_;
    com::UniqueHandle<BrushTraits> brush_;
};

}  // namespace kel::terminal
