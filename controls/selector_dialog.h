#pragma once
// The window of the multi-select dialog.

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "controls/model/selector_layout.h"
#include "ui/dialog.h"

namespace kel::controls {

struct Option {
    std::wstring name;
    bool isChecked = false;
};

// An empty caption hides its button.
struct SelectorTexts {
    std::wstring title = L"Select options";
    std::wstring prompt = L"Select options:";
    std::wstring ok = L"OK";
    std::wstring cancel = L"Cancel";
};

class SelectorDialog final : public ui::Dialog {
public:
    SelectorDialog(com::ObjectCore& component, SelectorTexts texts, std::vector<Option> options)
        : Dialog(&component), texts_(std::move(texts)), options_(std::move(options)) {}

    // Which options are checked, in their order; nothing when the user cancelled. Throws.
    std::optional<std::vector<bool>> ask(HWND owner);

protected:
    void initialise() override;
    HWND initialFocus() override;
    bool command(int control, int notification) override;
    std::optional<LRESULT> intercepted(HWND control, UINT message, WPARAM wide,
                                       LPARAM longer) override;

private:
    void showTexts();
    void makeRoom();
    int buttonWidth(int identifier) const;
    SIZE measure(int identifier, int width, UINT format) const;
    void fill();
    void fitColumn();

    int rowOfCheckBox(LPARAM position) const;
    UINT state(int row, UINT mask) const;
    void setState(int row, UINT state, UINT mask);
    void setCheck(int row, bool isChecked);
    bool isChecked(int row) const;
    std::vector<int> selectedRows() const;
    void work(int row, bool isControlHeld);
    void toggleCheck(int row);
    void toggleSelection(int row);

    SelectorTexts texts_;
    std::vector<Option> options_;
    std::vector<bool> answers_;
    // Kept, since the dialog finds a control by asking the system, which takes long for each row.
    HWND list_ = nullptr;
};

}  // namespace kel::controls
