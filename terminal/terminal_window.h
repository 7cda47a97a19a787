#pragma once
// The window of the terminal: the output pane, the search bar and the command line.

#include <windows.h>

#include <ocidl.h>

#include <memory>
#include <optional>
#include <string>

#include "com/object.h"
#include "ole/font.h"
#include "terminal/brush.h"
#include "terminal/command_line.h"
#include "terminal/keys.h"
#include "terminal/output_pane.h"
#include "terminal/search_bar.h"
#include "ui/dialog.h"

namespace kel::terminal {

// What the window shows, whether it is open or not.
struct TerminalLook {
    OLE_COLOR outputText = 0xFFFFFF;
    OLE_COLOR outputBackground = 0;
    OLE_COLOR commandText = 0xFFFFFF;
    OLE_COLOR commandBackground = 0;
    OLE_COLOR background = static_cast<OLE_COLOR>(0x80000000 | COLOR_BTNFACE);
    com::ComPtr<IFontDisp> font;
    bool showsCommandLine = true;
    bool showsTimeStamps = false;
    std::size_t outputLimit = 1 << 20;
};

// What the window asks of the terminal that it belongs to. May throw.
class TerminalEvents {
public:
    virtual void opened() = 0;
    // The window goes: what was told of it is to be taken back.
    virtual void closing() = 0;
    virtual void ticked() = 0;
    // The font object has, which the windows follow by themselves. May end the window.
    virtual void fontChanged() = 0;
    virtual void focusMoved(bool isInside) = 0;
    virtual void sendPressed() = 0;
    // False while keys are to do nothing.
    virtual bool takesKeys() const = 0;

protected:
    ~TerminalEvents() = default;
};

// Can be opened again after it was closed; the history of commands stays.
class TerminalWindow final : public ui::Dialog {
public:
    // `look` and `events` outlive the window.
    TerminalWindow(com::ObjectCore& component, const TerminalLook& look, TerminalEvents& events)
        : Dialog(&component), component_(component), look_(look), events_(events) {}

    // In pixels.
    static SIZE naturalSize();

    // Throws com::Error when there can be no window.
    void open(HWND parent);
    void close();

    CommandLine& commandLine() { return commandLine_; }
    // Null while the window is closed.
    OutputPane* output() { return output_.get(); }
    HWND outputWindow() const { return output_ ? output_->window() : nullptr; }

    void openSearch();
    // Follow a look that has changed; do nothing while the window is closed.
    void followColours();
    void followFont();
    void followCommandLine();
    void followOutput();

    void showFailure(const std::wstring& text) override;

protected:
    void initialise() override;
    bool command(int control, int notification) override;
    void timer(UINT_PTR) override { events_.ticked(); }
    std::optional<LRESULT> handle(UINT message, WPARAM wide, LPARAM longer) override;
    std::optional<LRESULT> intercepted(HWND control, UINT message, WPARAM wide,
                                       LPARAM longer) override;
    void destroyed() override;

private:
    void build();
    void applyFont();
    void arrange();
    void takeFocus();
    LRESULT colour(HDC device, HWND child) const;
    std::optional<LRESULT> dialogCode(LPARAM asked) const;
    bool wants(KeyCommand command) const;
    void run(KeyCommand command);
    std::optional<LRESULT> key(UINT message, WPARAM key);

    com::ObjectCore& component_;
    const TerminalLook& look_;
    TerminalEvents& events_;
    CommandLine commandLine_;
    std::unique_ptr<OutputPane> output_;
    std::unique_ptr<SearchBar> searchBar_;
    Brush outputBrush_;
    Brush commandBrush_;
    Brush backgroundBrush_;
    ole::FontHandle font_;
    std::optional<ole::FontWatch> fontWatch_;
    std::exception_ptr failure_;
};

}  // namespace kel::terminal
