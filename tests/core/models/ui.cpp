// What the window kit, the general windows and the writer of HTML files decide.
#include <algorithm>
#include <cwctype>

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
using test::shown;
using test::Subject;
using test::Words;

ui::Rectangle rectangle(Words& words) {
    ui::Rectangle place;
    for (int* edge : {&place.left, &place.top, &place.right, &place.bottom})
        *edge = words.number();
    return place;
}

std::string shown(const ui::Rectangle& place) {
    return shown(place.left, place.top, place.right, place.bottom);
}

// "window over": left, top, right and bottom of each; the work area is that of a bar at the top.
const Subject kPlacement("place of a window", [](Words& words) {
    const ui::Rectangle window = rectangle(words);
    return shown(centred(window, rectangle(words), {0, 30, 1000, 730}));
});

// 50 rows, 20 of them seen, the tenth at the top.
const Subject kScrolling("scrolling", [](const std::string& act, int row) {
    const ui::Scrolling scrolling{50, 20, 10};
    return act == "show" ? scrolling.showing(row) : scrolling.to(row);
});

const Subject kSize("size", ui::sizeText);
const Subject kDecimal("decimal", ui::decimalText);

bool isSameAscii(std::wstring_view left, std::wstring_view right) {
    return std::ranges::equal(left, right, {}, ::towlower, ::towlower);
}

const Subject kRecent("recent paths",
                      [recent = ui::RecentPaths(isSameAscii)](
                          const std::string& act, const std::vector<std::wstring>& given) mutable {
                          if (act == "kept") recent = ui::RecentPaths(isSameAscii, given);
                          for (const std::wstring& path : given) {
                              if (act == "add") recent.add(path);
                              if (act == "remove") recent.remove(path);
                          }
                          return recent.paths();
                      });

const Subject kChecks("rows to check", [](int row, const std::vector<int>& selected) {
    return controls::rowsToCheck(row, selected);
});

// "prompt-height ok-width cancel-width": window, prompt, list, OK, Cancel.
const Subject kSelector("layout of the options", [](int prompt, int ok, int cancel) {
    const controls::SelectorLayout designed{{100, 100, 400, 400},
                                            {10, 10, 290, 20},
                                            {10, 30, 290, 230},
                                            {130, 240, 205, 260},
                                            {215, 240, 290, 260}};
    const auto layout = layOut(designed, {prompt, ok, cancel});
    std::string places;
    for (const auto& place : {layout.window, layout.prompt, layout.list, layout.ok, layout.cancel})
        places += shown(place) + "; ";
    return places;
});

// "bar cancel" where they are shown: the window's height and the button's top.
const Subject kStatus("layout of the status", [](const std::string& bar,
                                                 const std::string& cancel) {
    const controls::StatusDesign design{120, {10, 30, 290, 45}, {100, 60, 180, 83}};
    const auto layout = layOut(design, bar == "bar", cancel == "cancel");
    return shown(layout.windowHeight, layout.cancelTop);
});

// "title; count kind caption initial choices; ...", where "m*500" is a long text and a kind its
// number: check, select, input. The window, its buttons, its pane if it scrolls, the first three
// rows. A character is four units wide.
const Subject kForm("form of a question", [](Words& words) {
    script::Form form;
    const auto take = [](Words& from) {
        const std::string text = from.text();
        const std::size_t star = text.find('*');
        if (star == text.npos) return test::wide(text);
        return std::wstring(std::stoul(text.substr(star + 1)), test::wide(text)[0]);
    };
    for (Words& row : words.parts()) {
        if (form.title.empty()) {
            form.title = take(row);
            continue;
        }
        const auto count = row.number<std::size_t>();
        const auto kind = row.take<script::ControlKind>();
        script::FormRow made{kind, take(row), take(row), {}};
        if (kind == script::ControlKind::Select) made.choices = {take(row)};
        form.rows.insert(form.rows.end(), count, made);
    }
    const auto place = [](const script::Place& at) {
        return shown(at.left, at.top, at.left + at.width, at.top + at.height);
    };
    const auto all =
        layOut(form, {680, 440, 10}, [](auto text) { return static_cast<int>(4 * text.size()); });
    std::string text =
        shown(all.width, all.height) + "; " + place(all.ok) + "; " + place(all.cancel);
    if (all.scrolls) text += "; " + std::to_string(all.visibleRows) + " in " + place(all.pane);
    for (std::size_t i = 0; i < std::min<std::size_t>(all.rows.size(), 3); ++i) {
        text += "; " + narrow(all.rows[i].caption) + " " + place(all.rows[i].captionPlace) + ", " +
                place(all.rows[i].field);
        if (all.rows[i].listWidth) text += ", list " + std::to_string(all.rows[i].listWidth);
    }
    return text;
});

const Subject kClockTexts("date and time",
                          [](int year, int month, int day, int hour, int minute, int second) {
                              const script::LocalTime time{year, month, day, hour, minute, second};
                              return shown(dateText(time), timeText(time));
                          });

// Calls divided by semicolons, "none" for a null text; "Open" goes on in another file, or in a
// folder.
const Subject kHtml("HTML file", [](Words& words) {
    const test::TemporaryFile files[2];
    html::HTMLStream stream;
    std::string opened = stream.Open(files[0].path()) ? "" : "not opened";
    for (Words& call : words.parts()) {
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
        if (member == "Open")
            opened += stream.Open(texts.empty() ? files[1].path() : files[1].path().parent_path())
                          ? "another: "
                          : "no folder: ";
    }
    stream.Close();
    const std::string bytes = files[0].bytes() + files[1].bytes();
    std::string text = bytes;
    std::erase(text, '\r');
    return (test::asTextFile(text) == bytes ? "" : "with other line ends: ") + opened + text;
});

}  // namespace
}  // namespace kel
