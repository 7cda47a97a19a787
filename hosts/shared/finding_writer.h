#pragma once
// What is found in a script, or has gone wrong in its run, in words that help.

#include <string>

#include "hosts/shared/model/diagnostic.h"
#include "hosts/shared/model/source_text.h"
#include "hosts/shared/script_file.h"

namespace kel::host {

// Texts are UTF-8.
class FindingWriter {
public:
    // Findings tell of `script`, which must outlive this, by its path or by `name`.
    FindingWriter(const ScriptFile& script, std::string path, std::string name)
        : source_(script.text), path_(std::move(path)), name_(std::move(name)) {}

    // As compilers tell it: place, kind and message; below them the line with a caret and perhaps a
    // hint, where the file can be read. Each line ends with a line feed.
    std::string text(const Diagnostic& finding);

    // The message, and a hint in parentheses where there is one.
    std::string message(const Diagnostic& finding);

private:
    // Looks at the lines of the script that the finding is about; of none where it cannot be read.
    template <class Look>
    std::string withSource(const Diagnostic& finding, Look&& look);

    SourceText source_;
    std::string path_;
    std::string name_;
};

}  // namespace kel::host
