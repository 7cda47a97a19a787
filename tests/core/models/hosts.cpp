// What the host programs and the trace link decide.
#include <algorithm>
#include <memory>

#include "hosts/keldesk/model/desk_options.h"
#include "hosts/keldesk/model/recent_menu.h"
#include "hosts/kelregister/model/register_options.h"
#include "hosts/kelrun/model/dialogue_text.h"
#include "hosts/kelrun/model/options.h"
#include "hosts/kelrun/model/status_line.h"
#include "hosts/model/unicode.h"
#include "hosts/shared/model/address.h"
#include "hosts/shared/model/failure.h"
#include "hosts/shared/model/hint.h"
#include "hosts/shared/model/line_status.h"
#include "hosts/shared/model/source_text.h"
#include "hosts/trace/model/speed.h"
#include "hosts/trace/model/trace_text.h"
#include "tests/core/models/subject.h"

namespace kel {
namespace {

using test::narrow;
using test::Subject;
using test::Words;

// What the user reads when a call fails, with the exit code before it.
template <class Call>
std::string shownOrFailure(Call&& call) {
    try {
        return call();
    } catch (const host::Failure& failure) {
        return std::to_string(static_cast<int>(failure.code())) + " " + failure.what();
    }
}

std::string named(const char* name, const std::string& value) {
    return value.empty() ? "" : std::string(name) + " " + value + "; ";
}

const Subject kRegister("options of kelregister", [](Words& words) {
    return shownOrFailure([&] {
        const auto options = kelregister::parseRegisterOptions(words.all());
        std::string shown = options.unregister ? "unregister; " : "";
        for (const std::string& library : options.libraries)
            shown += named("library", library);
        return shown + (options.help ? "help; " : "") + (options.version ? "version; " : "");
    });
});

// "line | message".
const Subject kHint("hint", [](Words& words) {
    const std::string line = words.line();
    const std::size_t bar = line.find(" | ");
    return host::hint(line.substr(bar + 3), line.substr(0, bar));
});

const Subject kOptions("options of kelrun", [](Words& words) {
    return shownOrFailure([&] {
        const kelrun::Options options = kelrun::parseOptions(words.all());
        std::string shown = named("script", options.script) + named("port", options.target.port) +
                            named("tcp", options.target.tcp) + named("link", options.link) +
                            named("baud", std::to_string(options.target.baudRate));
        for (const auto& [name, value] : options.variables)
            shown += named("variable", name + "=" + value);
        for (const auto& [name, value] : options.answers)
            shown += named("answer", name + "=" + value);
        shown += named("scripts", options.scriptPath.value_or("")) +
                 named("system", options.systemPath) + named("transcript", options.transcript) +
                 named("report", options.report) + named("record", options.record) +
                 named("host", options.hostScript);
        for (const std::string& argument : options.arguments)
            shown += "argument " + argument + "; ";
        if (options.speed != 1) shown += "speed " + std::to_string(options.speed) + "; ";
        const std::pair<const char*, bool> flags[] = {
            {"check", options.check},          {"json", options.json},
            {"keep-going", options.keepGoing}, {"interactive", options.interactive},
            {"print", options.printVariables}, {"quiet", options.quiet},
            {"diagnose", options.diagnose},    {"help", options.help}};
        for (const auto& [name, isSet] : flags)
            if (isSet) shown += std::string(name) + "; ";
        return shown + "end";
    });
});

const Subject kConnection("connection that a report tells", [](Words& words) {
    return kelrun::connectionText(kelrun::parseOptions(words.all()));
});

const Subject kDeskOptions("options of keldesk", [](Words& words) {
    return shownOrFailure([&] {
        const keldesk::DeskOptions options = keldesk::parseDeskOptions(words.all());
        return keldesk::nameOf(options.target) + " " + std::to_string(options.target.baudRate) +
               " " + options.link + " " + options.script;
    });
});

const Subject kAddress("address", [](Words& words) {
    return shownOrFailure([&] {
        const auto [host, port] = host::parseAddress(words.text());
        return host + " " + port;
    });
});

// "line column" of a byte. A character above 255 is one of two bytes, but for the accent U+0301.
const Subject kCaret("caret in a script", [](Words& words) {
    static const std::wstring text =
        L"one\r\n\ttwo\r\x00FC\x6F22x\n\ne\x0301x\x1Bz\n\xD83C\xDF0Ax\n" + std::wstring(501, L'x');
    static host::SourceText source(text);
    const auto line = words.number<std::size_t>();
    const auto column = words.number<std::size_t>();
    const auto bytesOf = [](std::u16string_view character) {
        return std::size_t{1} + (character[0] > 0xFF && character[0] != 0x0301);
    };
    const std::vector<std::string> hint = words.all();
    return source.excerpt(line, column, bytesOf, hint.empty() ? "" : hint[0]);
});

// Line 7 of a script: the seconds that have gone, and those of a wait, or of one that may end
// earlier.
const Subject kLineStatus("line that runs", [](Words& words) {
    const std::chrono::seconds elapsed{words.number<long>()};
    const std::vector<std::string> wait = words.all();
    std::optional<host::Wait> waited;
    if (!wait.empty()) waited = {L"waiting", std::stol(wait[0]), wait.size() > 1};
    return narrow(host::lineStatus(L"C:\\sea\\a.kel", 7, elapsed, waited));
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

const Subject kErrorLines("error lines", [] {
    return [lines = kelrun::ErrorLines()](Words& words) mutable {
        const std::string piece = words.line();
        return piece == "finish" ? lines.finish() : lines.next(piece);
    };
});

const Subject kMenu("menu of recent files", [](Words& words) {
    const auto index = words.number<std::size_t>();
    return narrow(keldesk::menuText(index, words.wide()));
});

// A line behind the header of a trace, or the file's first line.
std::string reasonOf(const std::string& file) {
    try {
        return std::to_string(trace::readTrace(file + "\n").size()) + " events";
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}
const Subject kTraceFile("first line of a trace",
                         [](Words& words) { return reasonOf(words.line()); });
const Subject kTraceLine("second line of a trace", [](Words& words) {
    return reasonOf(trace::headerLine("now") + "\n" + words.line());
});

const Subject kSpeed("speed of a replay", [](Words& words) {
    const double time = words.number<double>(), factor = words.number<double>();
    return trace::isSpeed(factor) ? std::to_string(trace::atSpeed(time, factor)) : "none";
});

}  // namespace
}  // namespace kel
