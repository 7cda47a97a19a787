#pragma once
// A line on a console that tells what goes on, and is gone before anything else is written.

#include <cstddef>
#include <string>
#include <string_view>

namespace kel::kelrun {

// Where it is shown: a screen of cells with a cursor.
class Screen {
public:
    virtual ~Screen() = default;

    virtual std::size_t column() const = 0;  // of the cursor, from 0
    virtual std::size_t width() const = 0;   // 0 when it is unknown
    // Writes at the cursor; a line feed begins a new row, and scrolls where there is none.
    virtual void write(std::wstring_view text) = 0;
    // Puts the cursor so many rows up, and into that column.
    virtual void moveUp(std::size_t rows, std::size_t column) = 0;
};

// The cursor stays where it was, so that a line of the dialogue that has not ended goes on there:
// below such a line the status has a row of its own.
class StatusLine {
public:
    // The screen has to outlive this.
    explicit StatusLine(Screen& screen) : screen_(screen) {}

    // In the place of what was shown before, and cut where it does not fit in a row.
    void show(std::wstring_view text);
    void wipe() { show({}); }

private:
    Screen& screen_;
    std::wstring shown_;
    std::size_t cells_ = 0;
};

}  // namespace kel::kelrun
