#pragma once
// The classes that the library must have, from class_table.txt.

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
};
const std::vector<ExpectedClass>& expectedClasses();

// False for those that are registered but refuse to be created, and for the pages.
bool isBuilt(const ExpectedClass& row);

// An identifier as text with braces, in upper case.
std::string toText(const GUID& identifier);

}  // namespace kel::test
