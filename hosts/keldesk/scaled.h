#pragma once
// Sizes for the resolution of the screen.

namespace kel::keldesk {

// Pixels of the screen for pixels at 96 dots per inch.
int scaled(int pixels);

}  // namespace kel::keldesk
