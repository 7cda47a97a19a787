#pragma once
// Looks a dialog over as a careful user would.

#include <windows.h>

#include <string>
#include <vector>

namespace kel::test {

// What is wrong with the controls of a dialog: texts that do not fit, controls that overlap or
// stick out, one mnemonic for two of them, a field, button, picture or bar that a screen reader
// could not name, one that the keys do not reach, a tab order that is not the order of reading.
// Empty when all is well.
std::vector<std::string> faultsOf(HWND dialog);

}  // namespace kel::test
