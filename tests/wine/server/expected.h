#pragma once
// What the library must have: the classes of class_table.txt, the interfaces of
// interface_table.txt.

#include <windows.h>

#include <string>
#include <vector>

namespace kel::test {

// A row of class_table.txt: the creatable classes in their order, then the pages, which have no
// registry script.
struct ExpectedClass {
    std::string name;
    CLSID identifier;
    int registryScript;

    // The class's interfaces as "default IThis, IThat, default source IEvents".
    std::string interfaces;

    std::wstring program() const;
    // False for those that are registered but refuse to be created, and for the pages.
    bool isBuilt() const;
};
const std::vector<ExpectedClass>& expectedClasses();

struct ExpectedInterface {
    std::string name;
    std::string identifier;
    bool isEvents;
};
std::vector<ExpectedInterface> expectedInterfaces();

// The lines of a table in this folder.
std::vector<std::string> linesOf(const std::string& table);

// An identifier as text with braces, in upper case.
std::string toText(const GUID& identifier);

}  // namespace kel::test
