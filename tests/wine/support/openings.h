#pragma once
// How each window of the library is opened, as openings.txt tells.

#include <windows.h>

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace kel::test {

struct Opening {
    std::string name;        // of the window's picture
    std::wstring component;  // its ProgID
    std::wstring caption;
    std::vector<std::string> calls;
    std::string script;
    std::vector<std::string> remembered;  // "section name = text" or "= dword:number" in the store
    bool hasPort = true;                  // the link's
    int button = 0;                       // pressed to come from there to the window
    std::wstring buttonCaption;           // of the window that the button opens
    std::string failingCall;              // of the link or the access objects
    int statusLine = 0;                   // that tells of the failure after the button
};

std::vector<Opening> readOpenings();

// Names an opening by its window.
void PrintTo(const Opening& opening, std::ostream* stream);

// Makes the component, with a link where it wants one, opens its window, lets `look` see it on
// another thread, and cancels it.
void open(const Opening& opening, const std::function<void(HWND)>& look);

}  // namespace kel::test
