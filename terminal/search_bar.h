#pragma once
// The search bar: a row of the terminal in which the user looks for a text of the output.

#include <windows.h>

#include <functional>
#include <optional>
#include <string>

#include "terminal/model/text_search.h"
#include "terminal/output_pane.h"
#include "ui/dialog.h"

namespace kel::terminal {

class SearchBar final : public ui::Dialog {
public:
    // `pane` outlives the bar.
    SearchBar(com::ObjectCore& component, OutputPane& pane) : Dialog(&component), pane_(pane) {}

    // Called when the bar needs or frees room, and when the focus is to go elsewhere.
    std::function<void()> onLayout;
    std::function<void()> onClosed;

    // Makes the window, not yet visible. Throws com::Error.
    void create(HWND parent);

    // Shows the bar with the selected text of the pane, if that is within a line.
    void open();
    void close();
    bool isOpen() const { return isOpen_; }

    // In pixels.
    int height() const { return height_; }
    void setPlace(const ui::Rectangle& place);

    // Select the next place where the text stands, around the ends.
    void findNext();
    void findPrevious();

protected:
    void initialise() override;
    bool command(int control, int notification) override;
    std::optional<LRESULT> handle(UINT message, WPARAM wide, LPARAM longer) override;
    std::optional<LRESULT> intercepted(HWND control, UINT message, WPARAM wide,
                                       LPARAM longer) override;
    void showFailure(const std::wstring& text) override;

private:
    bool key(HWND control, WPARAM key);
    void findWhileTyping();
    void show(const std::wstring& text, const TextSearch& search, std::optional<std::size_t> found);
    TextSearch searchIn(const std::wstring& text) const;
    void arrange();
    void moveFocus();

    OutputPane& pane_;
    bool isOpen_ = false;
    int height_ = 0;
    int width_ = 0;
    ui::Rectangle wantedPlace_;
    std::vector<std::pair<int, ui::Rectangle>> otherPlaces_;
};

}  // namespace kel::terminal
