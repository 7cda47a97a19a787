#include "tests/wine/server/expected.h"

#include <objbase.h>

#include <set>
#include <sstream>

#include "com/error.h"
#include "com/text.h"
#include "tests/wine/support/library.h"

namespace kel::test {

const std::vector<ExpectedClass>& expectedClasses() {
    static const std::vector<ExpectedClass> classes = [] {
        std::vector<ExpectedClass> read;
        for (const std::string& line : resourceLines(L"class_table")) {
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

bool isBuilt(const ExpectedClass& row) {
    static const std::set<std::string> unbuilt{"DataGrid", "HTMLChildWindow", "HTMLPageData",
                                               "HTMLWindow"};
    return row.registryScript != 0 && !unbuilt.contains(row.name);
}

std::string toText(const GUID& identifier) {
    return com::narrow(com::guidText(identifier));
}

}  // namespace kel::test
