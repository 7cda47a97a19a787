#pragma once
// Where the controls of a script's question stand: one row each, captions on the left, fields in
// one column, the buttons below. All sizes are in dialog units.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "script/engine/question.h"

namespace kel::script {

// How wide a text is in the font of the dialog.
using TextWidth = std::function<int(std::wstring_view text)>;

struct FormRow {
    ControlKind kind = ControlKind::Input;
    std::wstring caption;
    std::wstring initial;
    std::vector<std::wstring> choices;
};

struct Form {
    std::wstring title;
    std::vector<FormRow> rows;
};

// What the screen has room for.
struct FormSpace {
    int width = 0;
    int height = 0;
    int scrollBar = 0;  // how wide it is
};

struct Place {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;

    bool operator==(const Place&) const = default;
};

struct PlacedRow {
    std::wstring caption;  // shortened where it is too long
    Place captionPlace;
    Place field;
    int listWidth = 0;  // of the choices when they are dropped down
};

struct FormLayout {
    int width = 0;
    int height = 0;
    std::vector<PlacedRow> rows;
    int rowHeight = 0;  // from row to row

    // Where not all rows fit, they stand in a pane of this place, which shows so many at a time,
    // and their places are counted from its corner.
    bool scrolls = false;
    Place pane;
    int visibleRows = 0;

    Place ok;
    Place cancel;
};

// Throws std::length_error where there are more controls than a window can hold.
FormLayout layOut(const Form& form, const FormSpace& space, const TextWidth& widthOf);

}  // namespace kel::script
