#pragma once
// The output pane: an edit control that many small pieces of text can be appended to for days.

#include <windows.h>

#include <chrono>
#include <string>
#include <string_view>

#include "terminal/model/pane_text.h"

namespace kel::terminal {

// Whoever feeds the pane does it by the messages of an edit control: it selects the end (EM_SETSEL
// at or behind the length that WM_GETTEXTLENGTH told, or -1) and replaces the selection. Such
// pieces are collected, and shown together some thirty times a second, sooner when they are many,
// and before anybody reads the text, its lines or the selection. They touch neither the reader's
// selection nor the place to which he has scrolled; at the end of the text the view follows. Every
// other message does what it does to any edit control.
//
// Belongs to the thread of the control; may live longer than it.
class OutputPane {
public:
    // Throws com::Error.
    explicit OutputPane(HWND edit);
    ~OutputPane();
    OutputPane(const OutputPane&) = delete;
    OutputPane& operator=(const OutputPane&) = delete;

    // Null when the control is gone.
    HWND window() const { return edit_; }

    // Shows a text on lines of its own.
    void addLine(std::wstring_view text);
    void clear();

    // How many characters are kept; then whole lines go at the front, a quarter of them at a time.
    void setLimit(std::size_t characters);
    // Whether each new line begins with the time of its arrival.
    void setTimeStamps(bool shown) { hasTimeStamps_ = shown; }

    // All that is shown, what has been collected included.
    std::wstring text();

    struct Selection {
        std::size_t begin = 0;
        std::size_t end = 0;
    };
    Selection selection();
    // Scrolls to it as well.
    void select(Selection selection);
    void selectAll();
    // Does nothing when nothing is selected.
    void copySelection();

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wide, LPARAM longer,
                                      UINT_PTR identifier, DWORD_PTR pane);

    LRESULT process(UINT message, WPARAM wide, LPARAM longer);
    // The edit control's own answer.
    LRESULT ask(UINT message, WPARAM wide = 0, LPARAM longer = 0);

    LRESULT selectFor(WPARAM begin, LPARAM end);
    Selection selected();
    void append(std::wstring_view text);
    void replace(LPARAM text);
    void collected();
    void wait();
    void flush();
    void flushPart();
    std::size_t lengthOfPart() const;
    void adapt(std::size_t size);
    void show(const PaneChange& change, bool makesRoom);
    void apply(const PaneChange& change, bool makesRoom);
    void draw();
    std::size_t trim();
    void forget();
    void keepEndInView(UINT message, WPARAM wide, LPARAM longer);

    bool isAtEnd();
    void scrollTo(int firstLine);
    int visibleLines() const;
    std::size_t length() const;
    bool hasPending() const { return !pending_.added.empty() || pending_.removed > 0; }
    // What is left when room has been made.
    std::size_t kept() const { return limit_ - limit_ / 4; }

    void showMenu(POINT place);

    HWND edit_;
    PaneText content_;
    PaneChange pending_;
    std::size_t shown_ = 0;  // characters in the control
    std::size_t limit_ = 1 << 20;
    // The length that was told last, until somebody makes use of it.
    std::size_t told_ = 0;
    // Who feeds the pane has selected the end.
    bool isFeeding_ = false;
    bool hasTimeStamps_ = false;
    bool hasTimer_ = false;
    bool isShowing_ = false;
    // What is on the screen is not what is in the control. More is to be shown soon.
    bool isUndrawn_ = false;
    std::chrono::steady_clock::time_point drawn_;
    // How long the control has taken for the last part, and to draw, in milliseconds.
    double showing_ = 0;
    double drawing_ = 0;
    std::size_t part_ = 1 << 13;
    // The message whose answer is to be the edit control's own; WM_NULL for none.
    UINT asked_ = WM_NULL;
};

}  // namespace kel::terminal
