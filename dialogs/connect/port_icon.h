#pragma once
// The pictures of serial ports: a connector, in a shape of its own for each state.

#include <windows.h>

#include "dialogs/connect/model/serial_ports.h"

namespace kel::connect {

// Draws one into a square, in pixels; made for 16 and 24.
void drawPortIcon(HDC device, int left, int top, int size, PortState state);

}  // namespace kel::connect
