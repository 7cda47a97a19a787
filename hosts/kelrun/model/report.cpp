#include "hosts/kelrun/model/report.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "hosts/model/unicode.h"
#include "hosts/shared/model/failure.h"
#include "hosts/shared/model/visible_text.h"

namespace kel::kelrun {
namespace {

// No script and nothing from elsewhere, whatever got into the page.
constexpr std::string_view kHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width">
<style>
:root { color-scheme: light; }
body { margin: 1.5em auto; max-width: 62em; padding: 0 1em; font: 0.9em/1.4 sans-serif; color: #222; background: #fff; }
h1 { margin: 0 0 0.6em; font-size: 1.5em; overflow-wrap: anywhere; }
dl { display: grid; grid-template-columns: max-content 1fr; gap: 0.15em 1em; margin: 0 0 1.5em; }
dt { color: #666; }
dd { margin: 0; overflow-wrap: anywhere; }
table { width: 100%; table-layout: fixed; border-collapse: collapse; }
col.time { width: 6.5em; }
col.line { width: 5em; }
col.what { width: 5.5em; }
th { text-align: left; font-weight: normal; color: #666; }
th, td { padding: 0.1em 0.5em; vertical-align: baseline; overflow: hidden; }
thead th { border-bottom: 1px solid #888; }
td { white-space: pre-wrap; overflow-wrap: anywhere; unicode-bidi: isolate; }
td:nth-child(-n+2) { color: #666; font-variant-numeric: tabular-nums; }
td:nth-child(4) { font-family: monospace, monospace; font-size: 0.95em; }
.file th { padding-top: 0.8em; overflow-wrap: anywhere; }
.line td { border-top: 1px solid #ddd; }
.line td:nth-child(4) { font-weight: bold; }
.sent td:nth-child(n+3) { color: #0a4a8a; }
.received td:nth-child(n+3) { color: #222; }
.error td:nth-child(n+3), .failed { color: #a00; }
.error td:nth-child(3), .failed { font-weight: bold; }
.result td { border-top: 1px solid #888; }
.ran { color: #060; font-weight: bold; }
i { color: #a00; font-size: 0.8em; font-style: normal; border: 1px solid; }
@page { margin: 15mm 12mm; }
@media print {
body { margin: 0; padding: 0; max-width: none; font-size: 8.5pt; }
h1, dl { break-after: avoid; }
thead { display: table-header-group; }
tr { break-inside: avoid; }
.file { break-after: avoid; }
}
</style>
)";

constexpr std::string_view kTable = R"(<table>
<colgroup><col class="time"><col class="line"><col class="what"><col></colgroup>
<thead><tr><th scope="col">Time<th scope="col">Line<th scope="col">Event<th scope="col">Text</thead>
<tbody>
)";

// What closes the page. The next row is written over it.
constexpr std::string_view kTail = "</table>\n</body>\n</html>\n";

// The room for the result at the head of the page, and for its words.
constexpr std::size_t kResultRoom = 900;
constexpr std::size_t kLongestWords = 600;

// In the order of the kinds. An echo shows an error that has a row already.
constexpr const char* kRowKinds[] = {"line", "sent", "received", nullptr, "error", "result"};

// Characters that cannot be seen, or that turn others around.
constexpr hosts::CharacterRange kHidden[] = {
    {0x00AD, 0x00AD}, {0x034F, 0x034F}, {0x061C, 0x061C}, {0x115F, 0x1160},
    {0x17B4, 0x17B5}, {0x180B, 0x180F}, {0x200B, 0x200F}, {0x2028, 0x202E},
    {0x2060, 0x206F}, {0x3164, 0x3164}, {0xFDD0, 0xFDEF}, {0xFE00, 0xFE0F},
    {0xFEFF, 0xFEFF}, {0xFFA0, 0xFFA0}, {0xFFF0, 0xFFFB}, {0xE0000, 0xE0FFF}};

bool isHidden(char32_t code) {
    return (code & 0xFFFE) == 0xFFFE || hosts::isIn(kHidden, code);
}

std::string escaped(std::u16string_view character, char32_t code) {
    switch (code) {
        case U'&':
            return "&amp;";
        case U'<':
            return "&lt;";
        case U'>':
            return "&gt;";
        case U'"':
            return "&quot;";
        case U'\'':
            return "&#39;";
        default:
            break;
    }
    if (!isHidden(code)) return hosts::toUtf8(character);
    char name[24];
    std::snprintf(name, sizeof name, "<i>U+%04lX</i>", static_cast<unsigned long>(code));
    return name;
}

// The text as it is to be read, in no more than that many bytes of markup.
std::string markup(std::string_view text, std::size_t most = static_cast<std::size_t>(-1)) {
    constexpr std::string_view kCut = "\u2026";
    const std::u16string readable = hosts::toUtf16(host::oneLine(text));
    std::string result;
    result.reserve(std::min(most, text.size() + text.size() / 8));
    for (std::u16string_view rest = readable; !rest.empty();) {
        const auto [code, size] = hosts::frontCharacter(rest);
        const std::string one = escaped(rest.substr(0, size), code);
        if (result.size() + one.size() + kCut.size() > most) return result.append(kCut);
        result += one;
        rest.remove_prefix(size);
    }
    return result;
}

// The same where elements are not understood.
std::string plain(std::string markup) {
    for (const std::string_view frame : {"<i>", "</i>"}) {
        for (std::size_t at; (at = markup.find(frame)) != std::string::npos;)
            markup.erase(at, frame.size());
    }
    return markup;
}

// A line of the instrument has its end, which needs no sign.
std::string_view withoutLineEnd(std::string_view text) {
    if (text.ends_with('\n')) text.remove_suffix(1);
    if (text.ends_with('\r')) text.remove_suffix(1);
    return text;
}

// h:mm:ss.mmm, without hours that have not passed.
std::string timeText(long long milliseconds) {
    const long long minutes = milliseconds / 60'000;
    char text[48];
    const int size =
        minutes < 60 ? std::snprintf(text, sizeof text, "%lld", minutes)
                     : std::snprintf(text, sizeof text, "%lld:%02lld", minutes / 60, minutes % 60);
    std::snprintf(text + size, sizeof text - static_cast<std::size_t>(size), ":%02lld.%03lld",
                  milliseconds / 1000 % 60, milliseconds % 1000);
    return text;
}

std::string description(std::string_view term, std::string_view text) {
    return "<dt>" + std::string(term) + "<dd>" + markup(text) + "\n";
}

// Of one size, so that the end of the run can be written over its beginning.
std::string inRoom(std::string text) {
    text.resize(kResultRoom - 1, ' ');
    return text + '\n';
}

std::string resultText(const Entry& entry) {
    const auto code = static_cast<host::ExitCode>(entry.code);
    const bool hasRun = code == host::ExitCode::kRan;
    const char* const word = hasRun                               ? "Ran to its end"
                             : code == host::ExitCode::kCancelled ? "Cancelled"
                                                                  : "Failed";
    std::string text = "<dt>Result<dd class=\"";
    text.append(hasRun ? "ran" : "failed").append("\">").append(word);
    text += " (exit code " + std::to_string(entry.code) + ")";
    if (!hasRun) text += ": " + markup(entry.text, kLongestWords);
    return inRoom(text + "\n<dt>Duration<dd>" + timeText(entry.milliseconds));
}

}  // namespace

Report::Report(const ReportHeader& header, WriteAt writeAt) : writeAt_(std::move(writeAt)) {
    const std::string title = "Run of " + markup(header.script);
    std::string page(kHead);
    page += "<title>" + plain(title) + "</title>\n</head>\n<body>\n<h1>" + title + "</h1>\n<dl>\n";
    page += description("Date", header.date) + description("Link", header.link) +
            description("Connection", header.connection) +
            description("Version", "kelrun " + header.version);
    resultPlace_ = page.size();
    page += inRoom("<dt>Result<dd class=\"failed\">Not ended: the run goes on, or was broken off");
    append(page.append("</dl>\n").append(kTable));
}

void Report::tell(const Entry& entry) {
    const char* const kind = kRowKinds[static_cast<int>(entry.kind)];
    if (!kind) return;
    std::string rows;
    if (file_ != entry.file) {
        file_ = entry.file;
        rows += "<tr class=\"file\"><th colspan=\"4\">" + markup(file_) + "</tr>\n";
    }
    rows.append("<tr class=\"").append(kind).append("\"><td>" + timeText(entry.milliseconds));
    rows += "<td>" + (entry.line == 0 ? std::string() : std::to_string(entry.line));
    if (entry.column != 0) rows += ":" + std::to_string(entry.column);
    rows.append("<td>").append(kind).append("<td>");
    append(rows + markup(withoutLineEnd(entry.text)) + "</tr>\n");
    if (entry.kind == EntryKind::Result) writeAt_(resultPlace_, resultText(entry));
}

void Report::append(std::string text) {
    const std::size_t size = text.size();
    writeAt_(end_, text.append(kTail));
    end_ += size;
}

}  // namespace kel::kelrun
