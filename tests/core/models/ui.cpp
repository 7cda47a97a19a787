// What the window kit, the general windows and the writer of HTML files decide.
#include <algorithm>
#include <cwctype>
#include <stdexcept>

#include "controls/model/check_rule.h"
#include "controls/model/selector_layout.h"
#include "controls/model/status_layout.h"
#include "html/html_stream.h"
#include "script/engine/clock.h"
#include "script/model/form_layout.h"
#include "tests/core/models/subject.h"
#include "tests/support/temporary_file.h"
#include "ui/model/formats.h"
#include "ui/model/placement.h"
#include "ui/model/recent_paths.h"
#include "ui/model/scrolling.h"

namespace kel {
namespace {

using test::narrow;
using test::Subject;
using test::Words;

ui::Rectangle rectangle(Words& words) {
    ui::Rectangle place;
    for (int* edge : {&place.left, &place.top, &place.right, &place.bottom})
        *edge = words.number();
    return place;
}

std::string shown(const ui::Rectangle& place) {
    return std::to_string(place.left) + " " + std::to_string(place.top) + " " +
           std::to_string(place.right) + " " + std::to_string(place.bottom);
}

// "window over": left, top, right and bottom of each; the work area is that of a bar at the top.
const Subject kPlacement("place of a window", [](Words& words) {
    const ui::Rectangle window = rectangle(words);
    return shown(centred(window, rectangle(words), {0, 30, 1000, 730}));
});

// 50 rows, 20 of them seen, the tenth at the top.
const Subject kScrolling("scrolling", [](Words& words) {
    const ui::Scrolling scrolling{50, 20, 10};
    const bool shows = words.text() == "show";
    const int row = words.number();
    return std::to_string(shows ? scrolling.showing(row) : scrolling.to(row));
});

const Subject kSize("size",
                    [](Words& words) { return ui::sizeText(words.number<std::int64_t>()); });

const Subject kDecimal("decimal", [](Words& words) {
    const auto value = words.number<double>();
    const int decimals = words.number();
    return ui::decimalText(value, decimals, words.number());
});

bool isSameAscii(std::wstring_view left, std::wstring_view right) {
    return std::ranges::equal(left, right, {}, ::towlower, ::towlower);
}

const Subject kRecent("recent paths", [] {
    return [paths = ui::RecentPaths(isSameAscii)](Words& words) mutable {
        const std::string act = words.text();
        const std::vector<std::string> given = words.all();
        std::vector<std::wstring> wide(given.size());
        std::ranges::transform(given, wide.begin(), test::wide);
        if (act == "kept") paths = ui::RecentPaths(isSameAscii, wide);
        for (const std::wstring& path : wide) {
            if (act == "add") paths.add(path);
            if (act == "remove") paths.remove(path);
        }
        std::wstring shown;
        for (const std::wstring& path : paths.paths())
            shown += path + L"|";
        return narrow(shown);
    };
});

const Subject kChecks("rows to check", [](Words& words) {
    const int row = words.number();
    std::vector<int> selected;
    for (const std::string& each : words.all())
        selected.push_back(std::stoi(each));
    std::string rows;
    for (const int each : controls::rowsToCheck(row, selected))
        rows += " " + std::to_string(each);
    return rows;
});

// "prompt-height ok-width cancel-width": window, prompt, list, OK, Cancel.
const Subject kSelector("layout of the options", [](Words& words) {
    const controls::SelectorLayout designed{{100, 100, 400, 400},
                                            {10, 10, 290, 20},
                                            {10, 30, 290, 230},
                                            {130, 240, 205, 260},
                                            {215, 240, 290, 260}};
    const int prompt = words.number(), ok = words.number();
    const auto layout = layOut(designed, {prompt, ok, words.number()});
    return shown(layout.window) + "; " + shown(layout.prompt) + "; " + shown(layout.list) + "; " +
           shown(layout.ok) + "; " + shown(layout.cancel);
});

// "bar cancel" where they are shown: the window's height and the button's top.
const Subject kStatus("layout of the status", [](Words& words) {
    const controls::StatusDesign design{120, {10, 30, 290, 45}, {100, 60, 180, 83}};
    const bool showsBar = words.text() == "bar";
    const auto layout = layOut(design, showsBar, words.text() == "cancel");
    return std::to_string(layout.windowHeight) + " " + std::to_string(layout.cancelTop);
});

// "title; count kind caption initial choices; ...", where "m*500" is a long text. The window, its
// buttons, its pane if it scrolls, the first three rows. A character is four units wide.
const Subject kForm("form of a question", [](Words& words) -> std::string {
    std::istringstream parts(words.line());
    script::Form form;
    const auto take = [](Words& from) {
        const std::string text = from.text();
        const std::size_t star = text.find('*');
        if (star == text.npos) return test::wide(text);
        return std::wstring(std::stoul(text.substr(star + 1)), test::wide(text)[0]);
    };
    for (std::string part; std::getline(parts, part, ';');) {
        Words row(part);
        if (form.title.empty()) {
            form.title = take(row);
            continue;
        }
        const auto count = row.number<std::size_t>();
        const std::string kind = row.text();
        script::FormRow made{kind == "check"    ? script::ControlKind::Check
                             : kind == "select" ? script::ControlKind::Select
                                                : script::ControlKind::Input,
                             take(row),
                             take(row),
                             {}};
        if (kind == "select") made.choices = {take(row)};
        form.rows.insert(form.rows.end(), count, made);
    }
    try {
        const auto place = [](const script::Place& at) {
            return shown({at.left, at.top, at.left + at.width, at.top + at.height});
        };
        const auto all = layOut(form, {680, 440, 10},
                                [](auto text) { return static_cast<int>(4 * text.size()); });
        std::string text = std::to_string(all.width) + " " + std::to_string(all.height) + "; " +
                           place(all.ok) + "; " + place(all.cancel);
        if (all.scrolls) text += "; " + std::to_string(all.visibleRows) + " in " + place(all.pane);
        for (std::size_t i = 0; i < std::min<std::size_t>(all.rows.size(), 3); ++i) {
            text += "; " + narrow(all.rows[i].caption) + " " + place(all.rows[i].captionPlace) +
                    ", " + place(all.rows[i].field);
            if (all.rows[i].listWidth) text += ", list " + std::to_string(all.rows[i].listWidth);
        }
        return text;
    } catch (const std::length_error&) {
        return "too many";
    }
});

const Subject kClockTexts("date and time", [](Words& words) {
    script::LocalTime time;
    for (int* part : {&time.year, &time.month, &time.day, &time.hour, &time.minute, &time.second})
        *part = words.number();
    return dateText(time) + " " + timeText(time);
});

// Calls divided by semicolons, "none" for a null text.
const Subject kHtml("HTML file", [](Words& words) {
    const test::TemporaryFile file;
    html::HTMLStream stream;
    if (!stream.Open(file.path())) return std::string("cannot be opened");
    std::istringstream calls(words.line());
    for (std::string line; std::getline(calls, line, ';');) {
        Words call(line);
        const std::string member = call.text();
        std::vector<std::string> texts = call.all();
        const auto text = [&](std::size_t i) {
            return i < texts.size() && texts[i] != "none" ? texts[i].c_str() : nullptr;
        };
        if (member == "BeginDocument") stream.BeginDocument(text(0), text(1));
        if (member == "OpenTag") stream.OpenTag(text(0), text(1), text(2));
        if (member == "CloseTag") stream.CloseTag();
        if (member == "WriteElement") stream.WriteElement(text(0), text(1), text(2), text(3));
        if (member == "WriteLine") stream.WriteLine(text(0));
        if (member == "Close") stream.Close();
    }
    stream.Close();
    std::string text = file.bytes();
    std::erase(text, '\r');
    return test::asTextFile(text) == file.bytes() ? text : "with other line ends: " + text;
});

}  // namespace
}  // namespace kel
