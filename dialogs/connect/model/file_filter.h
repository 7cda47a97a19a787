#pragma once
// The kinds of file that the file chooser offers.

#include <string>
#include <string_view>

namespace kel::connect {

// From pairs of description and pattern, each part ended by a vertical bar, to the list that the
// system's file chooser takes: each part ended by a NUL. An empty text stands for all files.
// Nothing in the text can make a list that the chooser reads wrongly: a pair without a description
// shows its pattern, one without a pattern shows all files, and one without both is left out.
std::wstring chooserFilter(std::wstring_view filter);

}  // namespace kel::connect
