#include "hosts/shared/model/diagnostic.h"

#include <string_view>

#include "hosts/model/json.h"
#include "hosts/shared/model/visible_text.h"

namespace kel::host {
namespace {

std::string place(const Diagnostic& diagnostic) {
    std::string text = oneLine(diagnostic.file) + ':';
    if (diagnostic.line > 0) text += std::to_string(diagnostic.line) + ':';
    if (diagnostic.column > 0) text += std::to_string(diagnostic.column) + ':';
    return text + ' ';
}

std::string_view severity(const Diagnostic& diagnostic) {
    return diagnostic.isError ? "error" : "warning";
}

}  // namespace

std::string placeAndMessage(const Diagnostic& diagnostic) {
    return place(diagnostic) + oneLine(diagnostic.message);
}

std::string compilerText(const Diagnostic& diagnostic) {
    return place(diagnostic).append(severity(diagnostic)).append(": ") +
           oneLine(diagnostic.message);
}

std::string toJson(std::span<const Diagnostic> diagnostics) {
    std::string text = "[";
    for (const Diagnostic& diagnostic : diagnostics) {
        text += text.size() > 1 ? ",\n" : "\n";
        text += hosts::write(hosts::Json::Object{{"file", diagnostic.file},
                                                 {"line", diagnostic.line},
                                                 {"column", diagnostic.column},
                                                 {"severity", severity(diagnostic)},
                                                 {"message", diagnostic.message}});
    }
    return text + "\n]\n";
}

}  // namespace kel::host
