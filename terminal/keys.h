#pragma once
// What keys mean to the terminal.

#include <windows.h>

namespace kel::terminal {

enum class KeyCommand {
    None,
    // Of the command line.
    Send,
    Newer,
    Older,
    // Of the output pane, which never has the focus.
    PageUp,
    PageDown,
    Copy,
    Search,
    SearchNext,
    SearchPrevious
};

// What a message asks for, with the modifier keys of now; None for all but keys that go down.
KeyCommand keyCommand(UINT message, WPARAM key);

inline bool isOfCommandLine(KeyCommand command) {
    return command == KeyCommand::Send || command == KeyCommand::Newer ||
           command == KeyCommand::Older;
}

}  // namespace kel::terminal
