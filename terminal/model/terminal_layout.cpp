#include "terminal/model/terminal_layout.h"

#include <algorithm>

namespace kel::terminal {

TerminalLayout layOut(int width, int height, int searchBarHeight, int commandLineHeight) {
    const int commandTop = std::max(0, height - commandLineHeight);
    const int searchTop = std::max(0, commandTop - searchBarHeight);
    return {{0, 0, width, searchTop},
            {0, searchTop, width, commandTop},
            {0, commandTop, width, height}};
}

}  // namespace kel::terminal
