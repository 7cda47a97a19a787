#pragma once
// A part of the registry for a test alone.

#include <windows.h>

#include <set>
#include <string>

#include "com/handles.h"

namespace kel::test {

// Puts an empty key in the place of a root of the registry, for this process and as long as it
// lives.
class RegistrySandbox {
public:
    // Throws com::Error.
    explicit RegistrySandbox(HKEY root);
    ~RegistrySandbox();
    RegistrySandbox(const RegistrySandbox&) = delete;
    RegistrySandbox& operator=(const RegistrySandbox&) = delete;

    HKEY key() const { return key_.get(); }

    // A sorted line for each key, with its default value, and for each named value: "key = value",
    // "key : name = value". A value is a text in quotes, a number as "dword:0000000a", or its type
    // and bytes where it is kept in any other form than those two. Throws com::Error.
    std::set<std::string> listing() const;

private:
    void clear() const;

    HKEY root_;
    std::wstring path_;
    com::RegistryKeyHandle key_;
};

// A setting of the current user, as a dialog keeps it in a section of the store.
void remember(const std::string& section, const std::string& name, const std::string& text);
// The same from a line: "section name = text", "section name = dword:number".
void remember(const std::string& line);

// One line below the other.
template <class Lines>
std::string joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

}  // namespace kel::test
