#pragma once
// A dialog description made in memory, as the platform reads it.

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

namespace kel::ui {

// In dialog units, from the upper left corner of the client area.
struct UnitRectangle {
    short left = 0;
    short top = 0;
    short width = 0;
    short height = 0;
};

struct ControlDescription {
    const wchar_t* windowClass;
    std::wstring text;
    DWORD style;
    DWORD extendedStyle;
    UnitRectangle place;
    WORD identifier;
};

// A dialog in the font of all dialogs here.
class DialogTemplate {
public:
    DialogTemplate(std::wstring_view title, short width, short height,
                   DWORD style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME,
                   DWORD extendedStyle = 0);

    // Controls are reached with the tabulator in the order in which they are added.
    void add(const ControlDescription& control);

    const DLGTEMPLATE* get() const;

    static constexpr wchar_t kFontName[] = L"MS Shell Dlg";
    static constexpr WORD kFontPoints = 8;

private:
    void append(const void* bytes, std::size_t count);
    void appendNumber(WORD number) { append(&number, sizeof number); }
    void appendNumber(DWORD number) { append(&number, sizeof number); }
    void appendText(std::wstring_view text);
    void appendPlace(const UnitRectangle& place);
    void align();

    // Of double words, for the platform wants its descriptions aligned to them.
    std::vector<DWORD> words_;
    std::size_t size_ = 0;
};

}  // namespace kel::ui
