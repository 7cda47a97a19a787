#include "terminal/keys.h"

namespace kel::terminal {

KeyCommand keyCommand(UINT message, WPARAM key) {
    // Alt with Enter sends as well; Alt with an arrow opens the list.
    if (message == WM_SYSKEYDOWN) return key == VK_RETURN ? KeyCommand::Send : KeyCommand::None;
    if (message != WM_KEYDOWN) return KeyCommand::None;

    const bool hasControl = GetKeyState(VK_CONTROL) < 0;
    const bool hasShift = GetKeyState(VK_SHIFT) < 0;
    switch (key) {
        case VK_RETURN:
            return KeyCommand::Send;
        case VK_DOWN:
            return KeyCommand::Newer;
        case VK_UP:
            return KeyCommand::Older;
        case VK_PRIOR:
            return KeyCommand::PageUp;
        case VK_NEXT:
            return KeyCommand::PageDown;
        case VK_F3:
            return hasShift ? KeyCommand::SearchPrevious : KeyCommand::SearchNext;
        case 'F':
            return hasControl ? KeyCommand::Search : KeyCommand::None;
        case 'C':
            return hasControl ? KeyCommand::Copy : KeyCommand::None;
        default:
            return KeyCommand::None;
    }
}

}  // namespace kel::terminal
