#include "hosts/kelrun/check.h"

#include <algorithm>

#include "com/text.h"
#include "hosts/kelrun/model/source_text.h"
#include "hosts/shared/model/diagnostic.h"

namespace kel::kelrun {
namespace {

std::size_t sizeInCodePage(std::u16string_view character) {
    return com::narrow(std::wstring(character.begin(), character.end())).size();
}

std::string compilerTexts(const std::vector<Diagnostic>& diagnostics, const ScriptFile& script) {
    SourceText source(script.text);
    std::string text;
    for (const Diagnostic& diagnostic : diagnostics) {
        text += compilerText(diagnostic) + '\n';
        text += source.excerpt(diagnostic.line, diagnostic.column, sizeInCodePage);
    }
    return text;
}

}  // namespace

ExitCode showCheck(const Options& options, const ScriptFile& script,
                   const Preprocessor& preprocessor, ConsoleOutput& errors) {
    const std::vector<Diagnostic> found = preprocessor.check(script.text);
    ConsoleOutput output(STD_OUTPUT_HANDLE);
    output.write(options.json ? toJson(found) : compilerTexts(found, script));
    if (output.isBroken()) errors.write("kelrun: what was found could not be shown to its end\n");
    return std::ranges::any_of(found, &Diagnostic::isError) ? ExitCode::kFailed : ExitCode::kRan;
}

std::vector<Diagnostic> showErrors(const ScriptFile& script, const Preprocessor& preprocessor,
                                   ConsoleOutput& errors) {
    std::vector<Diagnostic> found = preprocessor.check(script.text);
    std::erase_if(found, [](const Diagnostic& diagnostic) { return !diagnostic.isError; });
    errors.write(compilerTexts(found, script));
    return found;
}

}  // namespace kel::kelrun
