#include "tests/wine/server/expected.h"

#include <objbase.h>

#include <fstream>
#include <set>
#include <sstream>

#include "com/error.h"
#include "com/text.h"
#include "tests/support/project_file.h"

namespace kel::test {

std::wstring ExpectedClass::program() const {
    return L"KelUtils." + com::widen(name) + L".1";
}

bool ExpectedClass::isBuilt() const {
    static const std::set<std::string> unbuilt{"DataGrid", "HTMLChildWindow", "HTMLPageData",
                                               "HTMLWindow"};
    return registryScript != 0 && !unbuilt.contains(name);
}

const std::vector<ExpectedClass>& expectedClasses() {
    static const std::vector<ExpectedClass> classes = [] {
        std::vector<ExpectedClass> read;
        for (const std::string& line : linesOf("class_table.txt")) {
            ExpectedClass& row = read.emplace_back();
            std::istringstream text(line);
            std::string identifier;
            text >> row.name >> identifier >> row.registryScript >> std::ws;
            std::getline(text, row.interfaces);
            com::check(CLSIDFromString(com::widen(identifier).c_str(), &row.identifier));
        }
        return read;
    }();
    return classes;
}

std::vector<ExpectedInterface> expectedInterfaces() {
    std::vector<ExpectedInterface> interfaces;
    for (const std::string& line : linesOf("interface_table.txt")) {
        if (line.starts_with(" ") || line.starts_with("library")) continue;
        std::string kind, name;
        std::istringstream(line) >> kind >> name;
        interfaces.push_back({name, line.substr(line.find('{')), kind == "events"});
    }
    return interfaces;
}

std::vector<std::string> linesOf(const std::string& table) {
    std::ifstream file(projectFile("tests/wine/server/" + table));
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

std::string toText(const GUID& identifier) {
    return com::narrow(com::guidText(identifier));
}

}  // namespace kel::test
