#pragma once
// A message box that its program can close.

#include <windows.h>

#include "com/text.h"

namespace kel::script {

class ClosableBox {
public:
    // The button that the user pressed; Cancel also where the box could not be shown.
    int ask(HWND owner, const com::Bstr& text);

    // Closes the open box as its Cancel button does.
    void cancel();

private:
    class Watch;

    HWND box_ = nullptr;
};

}  // namespace kel::script
