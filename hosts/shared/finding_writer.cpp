#include "hosts/shared/finding_writer.h"

#include "com/text.h"
#include "hosts/model/unicode.h"
#include "hosts/shared/model/failure.h"
#include "hosts/shared/model/hint.h"

namespace kel::host {
namespace {

std::size_t sizeInCodePage(std::u16string_view character) {
    return com::narrow(std::wstring(character.begin(), character.end())).size();
}

std::string hintFor(const Diagnostic& finding, SourceText& source) {
    return hint(finding.message, hosts::toUtf8(source.line(finding.line)));
}

}  // namespace

template <class Look>
std::string FindingWriter::withSource(const Diagnostic& finding, Look&& look) {
    if (finding.line == 0) return {};
    if (finding.file == path_ || finding.file == name_) return look(source_);
    // Of a script that a script ran, or of a host script.
    try {
        const ScriptFile script = readScript(finding.file);
        SourceText source(script.text);
        return look(source);
    } catch (const Failure&) {
        return {};  // the finding tells what is known
    }
}

std::string FindingWriter::text(const Diagnostic& finding) {
    return compilerText(finding) + '\n' + withSource(finding, [&](SourceText& source) {
               return source.excerpt(finding.line, finding.column, sizeInCodePage,
                                     hintFor(finding, source));
           });
}

std::string FindingWriter::message(const Diagnostic& finding) {
    const std::string help =
        withSource(finding, [&](SourceText& source) { return hintFor(finding, source); });
    return help.empty() ? finding.message : finding.message + " (" + help + ")";
}

}  // namespace kel::host
