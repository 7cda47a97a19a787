// What the host programs and the trace link decide.
#include <algorithm>
#include <memory>

#include "hosts/keldesk/model/desk_options.h"
#include "hosts/keldesk/model/recent_menu.h"
#include "hosts/kelregister/model/register_options.h"
#include "hosts/kelrun/model/diagnosis.h"
#include "hosts/kelrun/model/dialogue_text.h"
#include "hosts/kelrun/model/options.h"
#include "hosts/kelrun/model/status_line.h"
#include "hosts/model/unicode.h"
#include "hosts/shared/model/address.h"
#include "hosts/shared/model/hint.h"
#include "hosts/shared/model/image.h"
#include "hosts/shared/model/line_status.h"
#include "hosts/shared/model/source_text.h"
#include "hosts/trace/model/speed.h"
#include "hosts/trace/model/trace_text.h"
#include "tests/core/models/subject.h"

namespace kel {
namespace {

using test::narrow;
using test::shown;
using test::Subject;
using test::Words;

std::string named(const char* name, const std::string& value) {
    return value.empty() ? "" : std::string(name) + " " + value + "; ";
}

const Subject kRegister("options of kelregister", [](const std::vector<std::string>& arguments) {
    const auto options = kelregister::parseRegisterOptions(arguments);
    std::string text = options.unregister ? "unregister; " : "";
    for (const std::string& library : options.libraries)
        text += named("library", library);
    return text + (options.help ? "help; " : "") + (options.version ? "version; " : "");
});

// "line | message".
const Subject kHint("hint", [](Words& words) {
    const std::string line = words.line();
    const std::size_t bar = line.find(" | ");
    return host::hint(line.substr(bar + 3), line.substr(0, bar));
});

const Subject kOptions("options of kelrun", [](const std::vector<std::string>& arguments) {
    const kelrun::Options options = kelrun::parseOptions(arguments);
    std::string text = named("script", options.script) + named("port", options.target.port) +
                       named("tcp", options.target.tcp) + named("link", options.link) +
                       named("baud", std::to_string(options.target.baudRate));
    for (const auto& [name, value] : options.variables)
        text += named("variable", name + "=" + value);
    for (const auto& [name, value] : options.answers)
        text += named("answer", name + "=" + value);
    text += named("scripts", options.scriptPath.value_or("")) +
            named("system", options.systemPath) + named("transcript", options.transcript) +
            named("report", options.report) + named("record", options.record) +
            named("host", options.hostScript);
    for (const std::string& argument : options.arguments)
        text += "argument " + argument + "; ";
    if (options.speed != 1) text += "speed " + std::to_string(options.speed) + "; ";
    const std::pair<const char*, bool> flags[] = {
        {"check", options.check},          {"json", options.json},
        {"keep-going", options.keepGoing}, {"interactive", options.interactive},
        {"print", options.printVariables}, {"quiet", options.quiet},
        {"diagnose", options.diagnose},    {"help", options.help}};
    for (const auto& [name, isSet] : flags)
        if (isSet) text += std::string(name) + "; ";
    return text + "end";
});

const Subject kConnection("connection that a report tells",
                          [](const std::vector<std::string>& arguments) {
                              return kelrun::connectionText(kelrun::parseOptions(arguments));
                          });

// Whether a screen has room for it, and which words are in it.
const Subject kHelp("help of kelrun", [](const std::vector<std::string>& wanted) {
    std::string text = kelrun::helpText();
    std::string result = std::ranges::count(text, '\n') <= 24 ? "" : "too long ";
    for (const std::string& each : wanted)
        result += text.find(each) != text.npos ? "+" : "-";
    std::istringstream lines(text);
    while (std::getline(lines, text))
        if (text.size() >= 80) result += " too wide: " + text;
    return result;
});

const Subject kDeskOptions("options of keldesk", [](const std::vector<std::string>& arguments) {
    const keldesk::DeskOptions options = keldesk::parseDeskOptions(arguments);
    return shown(keldesk::nameOf(options.target), options.target.baudRate, options.link,
                 options.script);
});

const Subject kAddress("address", [](const std::string& text) {
    const auto [host, port] = host::parseAddress(text);
    return shown(host, port);
});

// "line column" of a byte. A character above 255 is one of two bytes, but for the accent U+0301.
const Subject kCaret("caret in a script", [](std::size_t line, std::size_t column, Words& words) {
    static const std::wstring text =
        L"one\r\n\ttwo\r\x00FC\x6F22x\n\ne\x0301x\x1Bz\n\xD83C\xDF0Ax\n" + std::wstring(501, L'x');
    static host::SourceText source(text);
    const auto bytesOf = [](std::u16string_view character) {
        return std::size_t{1} + (character[0] > 0xFF && character[0] != 0x0301);
    };
    return source.excerpt(line, column, bytesOf, words.rest());
});

// Line 7 of a script: the seconds that have gone, and those of a wait, or of one that may end
// earlier.
const Subject kLineStatus("line that runs", [](long elapsed, const std::vector<std::string>& wait) {
    std::optional<host::Wait> waited;
    if (!wait.empty()) waited = {L"waiting", std::stol(wait[0]), wait.size() > 1};
    return host::lineStatus(L"C:\\sea\\a.kel", 7, std::chrono::seconds(elapsed), waited);
});

// Parts: the name of the link; then for "library" and "link" a KEY and its VALUE, for "port" a name
// and a kind. A place and a kind are numbers.
const Subject kDiagnosis("diagnosis", [](const std::string& link, Words& words) {
    kelrun::Diagnosis found;
    found.linkName = link;
    for (Words& part : words.parts()) {
        const std::string subject = part.text(), key = part.text();
        if (subject == "port") {
            found.ports.push_back({key, part.take<kelrun::PortState::Kind>()});
            continue;
        }
        host::RegistrationReport& report = subject == "link" ? found.link : found.library;
        if (key == "place") report.place = part.take<host::Place>();
        if (key == "manifest") report.manifest = part.text();
        if (key == "file") report.file = part.text();
        if (key == "image") report.image = {true, part.number(), part.text()};
        if (key == "contents") report.contents = part.rest();
        if (key == "note") report.notes.push_back(part.rest());
        if (key == "fault") {
            const std::string fault = part.text();
            report.addFault(fault, part.rest());
        }
    }
    return diagnosisText(found) + (isWell(found) ? "" : "Not well.");
});

// The beginning of a file, the place that it tells of its header, or -1, and the header at 128.
const Subject kImage("bits of an image", [](std::string start, int place, Words& words) {
    if (place < 0) return host::imageBits(start);
    start.resize(0x80);
    start[0x3C] = static_cast<char>(place);
    return host::imageBits(start + words.rest());
});

// The units in hexadecimal.
const Subject kUnits("text in UTF-16", [](Words& words) {
    const std::u16string text = hosts::toUtf16(words.line());
    std::ostringstream units;
    for (const char16_t unit : text)
        units << std::hex << unsigned{unit} << " ";
    return units.str() + (hosts::toUtf8(text) == words.line() ? "" : "and not back");
});
const Subject kText("text of units", [](Words& words) {
    std::u16string text;
    for (const std::string& unit : words.all())
        text += static_cast<char16_t>(std::stoul(unit, nullptr, 16));
    return hosts::toUtf8(text);
});

// A screen of three rows, with a bar where the cursor is.
struct SmallScreen final : kelrun::Screen {
    std::size_t column() const override { return column_; }
    std::size_t width() const override { return 12; }
    void write(std::wstring_view text) override {
        for (const wchar_t character : text) {
            if (character != L'\n') rows_[row_].at(column_++) = character;
            if (character != L'\n' && column_ < width()) continue;
            column_ = 0;
            if (++row_ < std::size(rows_)) continue;
            std::ranges::copy(rows_ + 1, std::end(rows_), rows_);
            rows_[--row_].assign(width(), L' ');
        }
    }
    void moveUp(std::size_t rows, std::size_t column) override {
        row_ -= rows;
        column_ = column;
    }
    std::string shown() const {
        std::wstring all;
        for (const std::wstring& row : rows_) {
            const bool isHere = &row == rows_ + row_;
            std::wstring text = isHere ? row.substr(0, column_) + L"|" + row.substr(column_) : row;
            text.erase(text.find_last_not_of(L' ') + 1);
            all += text + L"/";
        }
        return narrow(all);
    }

private:
    std::wstring rows_[3] = {std::wstring(12, L' '), std::wstring(12, L' '),
                             std::wstring(12, L' ')};
    std::size_t row_ = 0;
    std::size_t column_ = 0;
};

// "dialogue" writes text where a slash is a line end, "status" shows one; both wipe what was there.
const Subject kStatusLine("status on a console", [] {
    const auto screen = std::make_shared<SmallScreen>();
    return [screen, status = kelrun::StatusLine(*screen)](Words& words) mutable {
        const bool isStatus = words.text() == "status";
        const std::vector<std::string> text = words.all();
        std::wstring shown = test::wide(text.empty() ? "" : text[0]);
        std::ranges::replace(shown, L'/', L'\n');
        if (!isStatus) status.wipe();
        isStatus ? status.show(shown) : screen->write(shown);
        return screen->shown();
    };
});

// The readable text, which is the same however the text is cut. A tilde stands for U+0085.
const Subject kDialogue("dialogue", [](Words& words) {
    std::u16string text = hosts::toUtf16(words.line());
    std::ranges::replace(text, u'~', u'\x85');
    kelrun::DialogueText whole, pieces;
    std::string joined;
    for (const char16_t character : text)
        joined += pieces.next({&character, 1});
    const bool isSame = whole.next(text) == joined && kelrun::DialogueText().atLineStart();
    return (isSame ? "" : "another when it is cut: ") + joined + (pieces.atLineStart() ? "|" : "");
});

const Subject kErrorLines("error lines", [lines = kelrun::ErrorLines()](Words& words) mutable {
    const std::string piece = words.line();
    return piece == "finish" ? lines.finish() : lines.next(piece);
});

const Subject kMenu("menu of recent files", keldesk::menuText);

// How many events there are behind the header of a trace, or what is wrong.
std::string countEvents(const std::string& file) {
    return shown(trace::readTrace(file).size(), "events");
}
const Subject kTraceFile("first line of a trace",
                         [](Words& words) { return countEvents(words.line() + "\n"); });
const Subject kTraceLine("second line of a trace", [](Words& words) {
    return countEvents(trace::headerLine("now") + "\n" + words.line() + "\n");
});
const Subject kCutTrace("beginnings of a trace", [](Words& words) {
    return test::ofEachBeginning(words.line(), countEvents);
});

const Subject kEvent("event of a trace",
                     [](Words& words) { return toLine(trace::fromLine(words.line())); });

const Subject kNumber("number in a trace", [](double number) {
    return trace::toLine({1.5, trace::CallEnded{1, 0, {number}, {}, {}}});
});

// "first last step" of the characters in a text.
const Subject kShown("text in a trace", [](int first, int last, int step) {
    std::u16string text;
    for (int unit = first; unit != last; unit += step)
        text += static_cast<char16_t>(unit);
    const std::string line = trace::toLine({1.5, trace::Shown{"serial1", text, true}});
    const auto back = std::get<trace::Shown>(trace::fromLine(line).what);
    return back.text == text && line.find_first_of("\r\n") == line.npos ? "comes back" : line;
});

const Subject kSpeed("speed of a replay", [](double time, double factor) {
    return trace::isSpeed(factor) ? shown(trace::atSpeed(time, factor)) : "none";
});

}  // namespace
}  // namespace kel
