#pragma once
// Cases that stand in text files of the project.

#include <fstream>
#include <stdexcept>
#include <string>

#include "hosts/conformance/model/cases.h"
#include "tests/support/project_file.h"

namespace kel::conformance {

// Names a case by its line.
inline void PrintTo(const Case& row, std::ostream* stream) {
    *stream << "Line" << row.steps.front().line;
}

}  // namespace kel::conformance

namespace kel::test {

using conformance::Case;
using conformance::escaped;
using conformance::Step;
using conformance::takeWord;
using conformance::unescaped;

// The name is relative to the project. Throws when there is no such file, or no case in it.
inline std::vector<Case> readCases(const std::string& name) {
    std::ifstream file(projectFile(name));
    auto cases = conformance::readCases(file);
    if (cases.empty()) throw std::runtime_error("There are no cases in " + name);
    return cases;
}

}  // namespace kel::test
