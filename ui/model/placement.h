#pragma once
// Where a window comes to stand.

namespace kel::ui {

// In pixels; right and bottom are just outside.
struct Rectangle {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool operator==(const Rectangle&) const = default;
};

// A window moved over the middle of another rectangle and kept inside the work area; where it is
// larger than that, its left and top edges stay visible. Its size does not change.
Rectangle centred(const Rectangle& window, const Rectangle& over, const Rectangle& workArea);

}  // namespace kel::ui
