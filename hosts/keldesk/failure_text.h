#pragma once
// What a message box tells of a failure.

#include <string>

namespace kel::keldesk {

// Of the exception that is being handled.
std::wstring failureText();

}  // namespace kel::keldesk
