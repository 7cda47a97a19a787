#include "tests/wine/support/user.h"

#include <gtest/gtest.h>

#include <commctrl.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "com/text.h"
#include "tests/support/project_file.h"
#include "tests/wine/support/dialog_faults.h"

namespace kel::test {
namespace {

WORD keyOf(const std::string& name) {
    static const std::map<std::string, WORD, std::less<>> known = {
        {"Tab", VK_TAB},       {"Enter", VK_RETURN}, {"Escape", VK_ESCAPE}, {"Space", VK_SPACE},
        {"Up", VK_UP},         {"Down", VK_DOWN},    {"Left", VK_LEFT},     {"Right", VK_RIGHT},
        {"Home", VK_HOME},     {"End", VK_END},      {"Ctrl", VK_CONTROL},  {"Shift", VK_SHIFT},
        {"Delete", VK_DELETE}, {"Alt", VK_MENU},     {"PageUp", VK_PRIOR},  {"PageDown", VK_NEXT},
        {"F3", VK_F3},         {"F7", VK_F7}};
    if (name.size() == 1 && std::isupper(static_cast<unsigned char>(name[0]))) return name[0];
    const auto found = known.find(name);
    if (found == known.end()) throw std::invalid_argument("there is no key " + name);
    return found->second;
}

LRESULT send(HWND window, UINT message, WPARAM wide = 0, LPARAM longer = 0) {
    return DialogDriver::send(window, message, wide, longer);
}

std::string textOf(HWND window) {
    return com::narrow(DialogDriver::textOf(window), CP_UTF8);
}

// Each row: its box where there are boxes, a star where it is selected, its cells.
std::string rowsOf(HWND list) {
    const bool hasBoxes = send(list, LVM_GETEXTENDEDLISTVIEWSTYLE) & LVS_EX_CHECKBOXES;
    const auto header = reinterpret_cast<HWND>(send(list, LVM_GETHEADER));
    const auto columns = std::max<LRESULT>(1, header ? send(header, HDM_GETITEMCOUNT) : 1);
    std::string rows;
    const LRESULT count = send(list, LVM_GETITEMCOUNT);
    for (LRESULT row = 0; row < count; ++row) {
        const auto state = static_cast<UINT>(send(list, LVM_GETITEMSTATE, static_cast<WPARAM>(row),
                                                  LVIS_STATEIMAGEMASK | LVIS_SELECTED));
        rows += row > 0 ? ", " : "";
        if (hasBoxes) rows += (state & LVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2) ? "+" : "-";
        rows += state & LVIS_SELECTED ? "*" : "";
        for (int column = 0; column < columns; ++column) {
            wchar_t text[256] = L"";
            LVITEMW item{};
            item.iSubItem = column;
            item.pszText = text;
            item.cchTextMax = static_cast<int>(std::size(text));
            send(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
            rows += (column > 0 ? "|" : "") + com::narrow(item.pszText, CP_UTF8);
        }
    }
    return rows;
}

// Each item: a star where it is selected, what its tooltip says, which begins with its label.
std::string itemsOf(HWND tree) {
    const auto selected = send(tree, TVM_GETNEXTITEM, TVGN_CARET);
    std::string items;
    for (auto item = send(tree, TVM_GETNEXTITEM, TVGN_ROOT); item;
         item = send(tree, TVM_GETNEXTITEM, TVGN_NEXT, item)) {
        wchar_t text[256] = L"";
        NMTVGETINFOTIPW asked{};
        asked.hdr = {tree, static_cast<UINT_PTR>(GetDlgCtrlID(tree)),
                     static_cast<UINT>(send(tree, TVM_GETUNICODEFORMAT) ? TVN_GETINFOTIPW
                                                                        : TVN_GETINFOTIPA)};
        asked.pszText = text;
        asked.cchTextMax = static_cast<int>(std::size(text));
        asked.hItem = reinterpret_cast<HTREEITEM>(item);
        send(GetParent(tree), WM_NOTIFY, asked.hdr.idFrom, reinterpret_cast<LPARAM>(&asked));
        wchar_t label[256] = L"";
        TVITEMW entry{};
        entry.mask = TVIF_TEXT;
        entry.hItem = asked.hItem;
        entry.pszText = label;
        entry.cchTextMax = static_cast<int>(std::size(label));
        send(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&entry));
        items += (items.empty() ? "" : ", ") + std::string(item == selected ? "*" : "");
        if (!std::wstring_view(text).starts_with(label))
            items += com::narrow(label, CP_UTF8) + ": ";
        items += com::narrow(text, CP_UTF8);
    }
    return items;
}

LPARAM itemAt(HWND tree, int index) {
    auto item = send(tree, TVM_GETNEXTITEM, TVGN_ROOT);
    while (index-- > 0)
        item = send(tree, TVM_GETNEXTITEM, TVGN_NEXT, item);
    return item;
}

// Titles, alignments and widths.
std::string columnsOf(HWND list) {
    std::string columns;
    wchar_t text[64] = L"";
    LVCOLUMNW column{LVCF_TEXT | LVCF_FMT | LVCF_WIDTH, 0, 0, text, 64, 0, 0, 0, 0, 0, 0};
    for (WPARAM i = 0; send(list, LVM_GETCOLUMNW, i, reinterpret_cast<LPARAM>(&column)); ++i)
        columns += com::narrow(text, CP_UTF8) + " " +
                   std::to_string(column.fmt & LVCFMT_JUSTIFYMASK) + " " +
                   std::to_string(column.cx) + ", ";
    return columns;
}

// Its class and style; of that without what controls take away because they draw it themselves.
std::string styleOf(HWND window) {
    constexpr LONG kOwn = WS_BORDER | WS_VSCROLL;
    char style[16];
    std::snprintf(style, sizeof style, " %08lx", GetWindowLongW(window, GWL_STYLE) & ~kOwn);
    const bool isOdd = send(window, WM_GETFONT) != send(GetParent(window), WM_GETFONT);
    return com::narrow(classOf(window)) + style + (isOdd ? " (another font)" : "");
}

}  // namespace

bool fits(std::string_view text, std::string_view pattern) {
    if (pattern.empty()) return text.empty();
    if (pattern[0] != '*') {
        return !text.empty() && text[0] == pattern[0] && fits(text.substr(1), pattern.substr(1));
    }
    return fits(text, pattern.substr(1)) || (!text.empty() && fits(text.substr(1), pattern));
}

std::string described(HWND window) {
    const std::wstring kind = classOf(window);
    std::string text;
    if (kind == WC_LISTVIEWW) {
        text = rowsOf(window);
    } else if (kind == WC_TREEVIEWW) {
        text = itemsOf(window);
    } else if (kind == PROGRESS_CLASSW) {
        text = std::to_string(send(window, PBM_GETPOS)) + " of " +
               std::to_string(send(window, PBM_GETRANGE, FALSE));
    } else {
        text = textOf(window);
    }
    const auto type = GetWindowLongW(window, GWL_STYLE) & BS_TYPEMASK;
    constexpr LONG kChecked[] = {BS_CHECKBOX, BS_AUTOCHECKBOX, BS_RADIOBUTTON, BS_AUTORADIOBUTTON};
    if (kind == L"Button" && std::ranges::count(kChecked, type) > 0)
        text = (send(window, BM_GETCHECK) == BST_CHECKED ? "[x] " : "[ ] ") + text;
    if (!IsWindowEnabled(window)) text += " (disabled)";
    if (!IsWindowVisible(window)) text += " (hidden)";
    return text;
}

int identifierOf(const std::string& name) {
    static const std::map<std::string, int, std::less<>> known = [] {
        std::map<std::string, int, std::less<>> names = {
            {"OK", IDOK}, {"CANCEL", IDCANCEL}, {"YES", IDYES}, {"NO", IDNO}, {"TEXT", 0xFFFF}};
        for (const char* file : {"resources/resource_ids.h", "hosts/keldesk/resource_ids.h"}) {
            std::ifstream header(projectFile(file));
            std::string word, constant;
            for (int number; header >> word;)
                if (word == "#define" && header >> constant >> number &&
                    (constant.starts_with("IDC_") || constant.starts_with("IDM_")))
                    names[constant.substr(4)] = number;
        }
        return names;
    }();
    if (!name.empty() && std::isdigit(static_cast<unsigned char>(name[0]))) return std::stoi(name);
    const auto found = known.find(name);
    if (found == known.end()) throw std::invalid_argument("there is no control " + name);
    return found->second;
}

void User::play(const std::vector<const Step*>& steps) {
    for (const Step* step : steps) {
        if (step != steps.front()) stage_.transcript.nextStep();
        for (const std::string& line : step->settings) {
            try {
                act(stage_.expanded(line));
            } catch (const std::exception& failure) {
                if (!stage_.hasFailed())
                    throw std::runtime_error("'" + line + "': " + failure.what());
            }
        }
    }
    driver_.waitUntil("the host's calls to come back", [&] {
        if (leaves_ || stage_.hasFailed()) driver_.leave();
        return stage_.isThrough.load();
    });
}

void User::wait(const std::string& what, const std::function<bool()>& holds) {
    driver_.waitUntil(what.c_str(), [&] {
        if (holds()) return true;
        if (!stage_.hasFailed()) return false;
        stage_.settle(driver_);
        if (!holds()) throw std::runtime_error(what + " after the failure");
        return true;
    });
}

void User::act(const std::string& line) {
    std::string rest = line;
    const std::string word = takeWord(rest);
    const auto post = [&](UINT message, WPARAM wide = 0) {
        PostMessageW(driver_.window(), message, wide, 0);
    };
    const std::vector<UINT> click = {WM_LBUTTONDOWN, WM_LBUTTONUP};
    const std::vector<UINT> twice = {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP};
    const std::map<std::string_view, std::function<void()>> deeds = {
        {"press", [&] { press(rest); }},
        {"key", [&] { key(rest); }},
        {"type", [&] { driver_.type(widened(rest)); }},
        {"set",
         [&] {
             const std::string name = takeWord(rest);
             driver_.setText(identifierOf(name), widened(rest));
         }},
        {"choose", [&] { choose(rest); }},
        {"click", [&] { this->click(rest, click, 0); }},
        {"doubleclick", [&] { this->click(rest, twice, 0); }},
        {"controlclick", [&] { this->click(rest, click, MK_CONTROL); }},
        {"command", [&] { post(WM_COMMAND, static_cast<WPARAM>(identifierOf(rest))); }},
        {"close", [&] { post(WM_CLOSE); }},
        {"timer", [&] { send(driver_.window(), WM_TIMER, 1); }},
        {"message", [&] { post(RegisterWindowMessageW(widened(rest).c_str())); }},
    };
    const std::map<std::string_view, std::function<void()>> looks = {
        {"window",
         [&] {
             const std::wstring caption = widened(rest);
             wait("the window", [&] {
                 if (stage_.programThread != 0) driver_.moveTo(stage_.programThread);
                 return driver_.isThere(caption);
             });
             driver_.waitFor(caption);
         }},
        {"wait",
         [&] {
             const HWND window = control(takeWord(rest));
             wait("the text '" + rest + "'", [&] { return fits(described(window), rest); });
         }},
        {"told", [&] { wait("'" + rest + "'", [&] { return stage_.transcript.tells(rest); }); }},
        {"focus",
         [&] {
             const HWND window = control(rest);
             wait("the focus", [&] { return driver_.focus() == window; });
         }},
        {"gone", [&] { wait("the end", [&] { return !IsWindowVisible(driver_.window()); }); }},
        {"show", [&] { tellEach(rest, described); }},
        {"style", [&] { tellEach(rest, styleOf); }},
        {"columns", [&] { stage_.transcript.tell(columnsOf(control(rest))); }},
        {"caption",
         [&] { stage_.transcript.tell(textOf(GetWindow(driver_.focus(), GW_HWNDPREV))); }},
        {"picture",
         [&] {
             if (stage_.look) stage_.look(driver_.window());
             leaves_ = true;
         }},
        {"look",
         [&] {
             for (const std::string& fault : faultsOf(driver_.window()))
                 stage_.transcript.tell(fault);
         }},
        {"box", [&] { answerBox(widened(rest)); }},
        {"forget", [&] { stage_.transcript.forget(); }},
        {"host", [&] { stage_.playInside(driver_, rest); }},
    };
    const auto look = looks.find(word);
    if (look != looks.end()) return look->second();
    const auto deed = deeds.find(word);
    if (deed == deeds.end()) throw std::invalid_argument("not understood");
    deed->second();
    stage_.settle(driver_);
}

void User::press(const std::string& name) {
    const HWND button = control(name);
    if (!IsWindowEnabled(button) || !IsWindowVisible(button))
        throw std::runtime_error("nobody can press " + name);
    // Posted: what it does may run a dialog of its own.
    PostMessageW(button, BM_CLICK, 0, 0);
}

// "Enter", "Shift+Tab"
void User::key(std::string name) {
    const HWND before = driver_.focus();
    WORD modifier = 0;
    const std::size_t plus = name.find('+');
    if (plus != name.npos) {
        modifier = keyOf(name.substr(0, plus));
        name.erase(0, plus + 1);
    }
    driver_.key(keyOf(name), modifier);
    if (name == "Tab") wait("the focus", [&] { return driver_.focus() != before; });
}

// "SERIAL_RATE 300"; of a tree or list the rows by their number: "SELECTOR_LIST 0 1 3"
void User::choose(std::string line) {
    const std::string name = takeWord(line);
    const HWND window = control(name);
    const std::wstring kind = classOf(window);
    if (kind == L"ComboBox") {
        const auto index = send(window, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                reinterpret_cast<LPARAM>(widened(line).c_str()));
        if (index < 0) throw std::runtime_error("there is no choice " + line);
        send(window, CB_SETCURSEL, static_cast<WPARAM>(index));
        PostMessageW(GetParent(window), WM_COMMAND, MAKEWPARAM(identifierOf(name), CBN_SELCHANGE),
                     reinterpret_cast<LPARAM>(window));
    } else if (kind == WC_TREEVIEWW) {
        const LPARAM item = line.empty() ? 0 : itemAt(window, std::stoi(line));
        send(window, TVM_SELECTITEM, TVGN_CARET, item);
    } else if (kind == WC_LISTVIEWW) {
        LVITEMW item{};
        item.stateMask = LVIS_SELECTED;
        const auto set = [&](int row) {
            send(window, LVM_SETITEMSTATE, static_cast<WPARAM>(row),
                 reinterpret_cast<LPARAM>(&item));
        };
        set(-1);
        item.state = LVIS_SELECTED;
        std::istringstream rows(line);
        for (int row; rows >> row;)
            set(row);
    } else {
        throw std::runtime_error("there is nothing to choose in " + name);
    }
}

// A row's label, "SELECTOR_LIST 1", or the box before it, "SELECTOR_LIST 1 box".
void User::click(std::string line, const std::vector<UINT>& messages, WPARAM keys) {
    const HWND window = control(takeWord(line));
    const int row = std::stoi(takeWord(line));
    RECT place{};
    if (classOf(window) == WC_TREEVIEWW) {
        *reinterpret_cast<LPARAM*>(&place) = itemAt(window, row);
        send(window, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&place));
    } else {
        place.left = LVIR_LABEL;
        send(window, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&place));
    }
    const LONG x = place.left + (line == "box" ? -8 : 4);
    for (const UINT message : messages)
        PostMessageW(window, message, keys, MAKELPARAM(x, (place.top + place.bottom) / 2));
}

void User::tellEach(const std::string& names, std::string (*toldOf)(HWND)) {
    std::istringstream words(names);
    for (std::string name; words >> name;)
        stage_.transcript.tell(name + ": " + toldOf(control(name)));
}

// Tells what a message box says and closes it.
void User::answerBox(const std::wstring& caption) {
    wait("the box", [&] { return driver_.isThere(caption); });
    const HWND box = driver_.waitFor(caption);
    const HICON stop = LoadIconW(nullptr, MAKEINTRESOURCEW(32513));
    std::string text;
    for (HWND child = nullptr; (child = FindWindowExW(box, child, L"Static", nullptr));) {
        const auto icon = send(child, STM_GETICON);
        if (icon == 0) text += textOf(child);
        if (reinterpret_cast<HICON>(icon) == stop) text += "(stop) ";
    }
    stage_.transcript.tell(text);
    PostMessageW(box, WM_COMMAND, IDOK, 0);
    driver_.waitUntil("the box to be closed", [&] { return !IsWindow(box); });
}

HWND User::control(const std::string& name) {
    return driver_.control(identifierOf(name));
}

}  // namespace kel::test
