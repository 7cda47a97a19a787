#include "hosts/kelrun/check.h"

#include <algorithm>

namespace kel::kelrun {

ExitCode showCheck(const Options& options, const std::vector<Diagnostic>& found,
                   FindingWriter& writer, ConsoleOutput& errors) {
    ConsoleOutput output(STD_OUTPUT_HANDLE);
    if (options.json) {
        output.write(toJson(found));
    } else {
        for (const Diagnostic& finding : found)
            output.write(writer.text(finding));
    }
    if (output.isBroken()) errors.write("kelrun: what was found could not be shown to its end\n");
    return std::ranges::any_of(found, &Diagnostic::isError) ? ExitCode::kFailed : ExitCode::kRan;
}

std::size_t showErrors(const std::vector<Diagnostic>& found, FindingWriter& writer,
                       ConsoleOutput& errors) {
    std::size_t count = 0;
    for (const Diagnostic& finding : found) {
        if (!finding.isError) continue;
        errors.write(writer.text(finding));
        ++count;
    }
    return count;
}

std::string tellOfWarnings(const std::vector<Diagnostic>& found,
                           const std::vector<Diagnostic>& told) {
    const auto count = std::ranges::count_if(found, [&](const Diagnostic& finding) {
        return !finding.isError && std::ranges::none_of(told, [&](const Diagnostic& other) {
            return other.line == finding.line && other.column == finding.column;
        });
    });
    if (count == 0) return {};
    return "--check shows " + std::to_string(count) +
           (count == 1 ? " warning besides" : " warnings besides");
}

}  // namespace kel::kelrun
