#include "hosts/keldesk/main_window.h"

#include <commctrl.h>

#include <algorithm>

#include "com/scoped.h"
#include "com/variant.h"
#include "hosts/keldesk/failure_text.h"
#include "hosts/keldesk/file_question.h"
#include "hosts/keldesk/look.h"
#include "hosts/keldesk/model/recent_menu.h"
#include "hosts/keldesk/resource_ids.h"
#include "hosts/keldesk/scaled.h"
#include "hosts/keldesk/services.h"
#include "hosts/keldesk/sessions.h"
#include "hosts/keldesk/settings.h"
#include "hosts/keldesk/wide.h"
#include "hosts/shared/full_path.h"
#include "hosts/shared/model/failure.h"
#include "hosts/shared/script_file.h"
#include "hosts/shared/session.h"

namespace kel::keldesk {
namespace {

constexpr wchar_t kMainClass[] = L"KelDesk";
constexpr UINT_PTR kWatchTimer = 1;
constexpr UINT kWatchInterval = 1000;
constexpr int kMainWidth = 900;
constexpr int kMainHeight = 600;
constexpr int kRecentMenu = 3;                  // its place in the first menu
constexpr int kStatusParts[] = {200, 560, -1};  // their right edges

constexpr TerminalColour kColours[] = {
    {&IKelTerminal::get_ForeColor, &IKelTerminal::put_ForeColor},
    {&IKelTerminal::get_BackColor, &IKelTerminal::put_BackColor},
    {&IKelTerminal::get_CommandLineTextColor, &IKelTerminal::put_CommandLineTextColor},
    {&IKelTerminal::get_CommandLineBackColor, &IKelTerminal::put_CommandLineBackColor},
};

}  // namespace

MainWindow::MainWindow(const DeskOptions& options) : recent_(com::sameName, readRecentScripts()) {
    const HINSTANCE module = GetModuleHandleW(nullptr);
    INITCOMMONCONTROLSEX classes{sizeof classes, ICC_BAR_CLASSES | ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&classes);
    WNDCLASSW description{};
    description.lpfnWndProc = procedure;
    description.hInstance = module;
    description.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    description.hIcon = LoadIconW(nullptr, reinterpret_cast<LPCWSTR>(IDI_APPLICATION));
    description.lpszClassName = kMainClass;
    description.lpszMenuName = MAKEINTRESOURCEW(IDR_DESK);
    RegisterClassW(&description);
    const SIZE size = scaledToFit(kMainWidth, kMainHeight);
    window_ = CreateWindowExW(0, kMainClass, L"KelDesk", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                              CW_USEDEFAULT, CW_USEDEFAULT, size.cx, size.cy, nullptr, nullptr,
                              module, nullptr);
    if (!window_) throw com::lastError();
    RECT frame{};
    GetWindowRect(window_, &frame);
    const POINT place = inWorkArea({frame.left, frame.top}, size);
    SetWindowPos(window_, nullptr, place.x, place.y, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    status_ = CreateWindowExW(0, STATUSCLASSNAMEW, nullptr, WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP,
                              0, 0, 0, 0, window_, nullptr, module, nullptr);
    int parts[std::size(kStatusParts)];
    std::ranges::transform(kStatusParts, parts,
                           [](int edge) { return edge < 0 ? edge : scaled(edge); });
    SendMessageW(status_, SB_SETPARTS, std::size(parts), reinterpret_cast<LPARAM>(parts));

    host_ = std::make_unique<TerminalHost>(window_);
    instrument_ = std::make_unique<Instrument>(
        options.link, window_,
        [this](host::ScriptEvent event, const host::EventArguments& arguments) {
            followScript(event, arguments);
        });
    com::check(host_->terminal()->put_Communicator(instrument_->link().Get()), host_->terminal());
    runner_ = std::make_unique<ScriptRunner>(*instrument_, window_,
                                             [this](const std::wstring& text) { say(text); });
    variables_ = std::make_unique<ListWindow>(window_, L"Variables",
                                              std::vector<Column>{{L"Name", 160}, {L"Value", 260}});
    accelerators_.emplace(window_, static_cast<WORD>(IDR_DESK));
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    arrange();
    showConnection();
}

MainWindow::~MainWindow() {
    if (!window_) return;
    SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
    accelerators_.reset();
    host_.reset();
    runner_.reset();
    variables_.reset();
    instrument_.reset();
    DestroyWindow(window_);
}

void MainWindow::run(const DeskOptions& options) {
    attempt([&] {
        if (const std::string look = readLook(); !look.empty())
            restoreLook(host_->terminal(), look);
    });
    ShowWindow(window_, SW_SHOWNORMAL);
    host_->takeFocus();
    SetTimer(window_, kWatchTimer, kWatchInterval, nullptr);
    attempt([&] {
        if (nameOf(options.target).empty()) {
            beginNewSession();
        } else {
            connect(options.target);
        }
    });
    if (!options.script.empty()) attempt([&] { runScript(host::fullPath(wide(options.script))); });

    MSG message;
    while (!isClosing_ && GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    attempt([&] { keepSettings(); });
}

LRESULT CALLBACK MainWindow::procedure(HWND window, UINT message, WPARAM wide, LPARAM longer) {
    auto* self = reinterpret_cast<MainWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return self ? self->handle(message, wide, longer)
                : DefWindowProcW(window, message, wide, longer);
}

template <class Deed>
void MainWindow::attempt(Deed&& deed) noexcept {
    try {
        deed();
    } catch (...) {
        MessageBoxW(window_, failureText().c_str(), L"KelDesk", MB_OK | MB_ICONERROR);
    }
}

LRESULT MainWindow::handle(UINT message, WPARAM wide, LPARAM longer) {
    switch (message) {
        case WM_SIZE:
            arrange();
            return 0;
        case WM_SETFOCUS:
            host_->takeFocus();
            return 0;
        case WM_INITMENUPOPUP:
            attempt([&] { updateMenu(); });
            return 0;
        case WM_COMMAND:
            attempt([&] { command(LOWORD(wide)); });
            return 0;
        case WM_TIMER:
            attempt([&] { watchConnection(); });
            if (isRunning()) showLine();
            return 0;
        case WM_CLOSE:
            attempt([&] { close(); });
            return 0;
        case WM_ENDSESSION:
            // Nothing of this program runs once this has been answered.
            if (wide) attempt([&] { keepSettings(); });
            return 0;
        default:
            return DefWindowProcW(window_, message, wide, longer);
    }
}

void MainWindow::arrange() {
    SendMessageW(status_, WM_SIZE, 0, 0);
    RECT client{};
    RECT bar{};
    GetClientRect(window_, &client);
    GetWindowRect(status_, &bar);
    client.bottom -= std::min(client.bottom, bar.bottom - bar.top);
    host_->setPlace(client);
}

void MainWindow::command(int command) {
    const auto& recent = recent_.paths();
    const auto index = static_cast<std::size_t>(command - IDM_RECENT_FIRST);
    if (command >= IDM_RECENT_FIRST && index < recent.size()) {
        const std::wstring path = recent[index];
        return runScript(path);
    }
    switch (command) {
        case IDM_RUN_SCRIPT:
            return askForScript(true);
        case IDM_CHECK_SCRIPT:
            return askForScript(false);
        case IDM_LOG:
            return toggleLog();
        case IDM_EXIT:
            return close();
        case IDM_NEW_SESSION:
            return beginNewSession();
        case IDM_CONNECT_SERIAL:
            return connectBy([&] { return connectSerial(window_, instrument_->link()); });
        case IDM_CONNECT_NETWORK:
            return connectBy([&] { return connectNetwork(window_, instrument_->link()); });
        case IDM_FIRMWARE:
            return service([&] { return updateFirmware(window_, instrument_->link()); });
        case IDM_PRESSURE_OFFSET:
            return service([&] { return setPressureOffset(window_, instrument_->link()); });
        case IDM_RECORDER:
            return service([&] { return showRecorder(window_, instrument_->link()); });
        case IDM_COMPASS:
            return service([&] {
                return calibrateCompass(window_, instrument_->link(), askForFile(window_, kReport));
            });
        case IDM_DISCONNECT:
            return disconnect(L"Disconnected");
        case IDM_CANCEL_SCRIPT:
            if (isRunning()) instrument_->cancel();
            return;
        case IDM_VARIABLES:
            return showVariables();
        case IDM_FINDINGS:
            return runner_->showFindings();
        case IDM_ABOUT:
            MessageBoxW(window_,
                        L"KelDesk " KEL_VERSION
                        "\n\nA desktop host of KelUtils: a terminal and scripts for field "
                        "instruments.\n\nThe link BenchLink.Communicator stands in for the "
                        "library of an instrument's maker.",
                        L"About KelDesk", MB_OK | MB_ICONINFORMATION);
            return;
        default:
            change(command);
    }
}

// What the terminal shows, and how.
void MainWindow::change(int command) {
    const auto& terminal = host_->terminal();
    switch (command) {
        case IDM_OUTPUT_TEXT:
        case IDM_OUTPUT_BACKGROUND:
        case IDM_COMMAND_TEXT:
        case IDM_COMMAND_BACKGROUND:
            return chooseColour(window_, terminal, kColours[command - IDM_OUTPUT_TEXT]);
        case IDM_FONT:
            return chooseFont(window_, terminal);
        case IDM_COMMAND_LINE:
            return toggle(&IKelTerminal3::get_ShowCommandLine, &IKelTerminal3::put_ShowCommandLine);
        case IDM_TIME_STAMPS:
            return toggle(&IKelTerminal3::get_TimeStamps, &IKelTerminal3::put_TimeStamps);
        case IDM_CLEAR:
            return com::check(terminal->Clear(), terminal);
        case IDM_COPY_OUTPUT:
            return copyOutput();
        case IDM_FIND:
            return com::check(terminal->ShowSearch(), terminal);
    }
}

void MainWindow::toggle(HRESULT (STDMETHODCALLTYPE IKelTerminal3::*get)(VARIANT_BOOL*),
                        HRESULT (STDMETHODCALLTYPE IKelTerminal3::*put)(VARIANT_BOOL)) {
    const auto& terminal = host_->terminal();
    VARIANT_BOOL is = VARIANT_FALSE;
    com::check((terminal.Get()->*get)(&is), terminal);
    com::check((terminal.Get()->*put)(com::variantBool(!com::isTrue(is))), terminal);
}

void MainWindow::updateMenu() {
    const HMENU menu = GetMenu(window_);
    const auto enable = [&](int command, bool isEnabled) {
        EnableMenuItem(menu, static_cast<UINT>(command), isEnabled ? MF_ENABLED : MF_GRAYED);
    };
    const auto tick = [&](int command, bool isTicked) {
        CheckMenuItem(menu, static_cast<UINT>(command), isTicked ? MF_CHECKED : MF_UNCHECKED);
    };
    const auto& terminal = host_->terminal();
    VARIANT_BOOL showsCommandLine = VARIANT_FALSE;
    VARIANT_BOOL hasTimeStamps = VARIANT_FALSE;
    com::check(terminal->get_ShowCommandLine(&showsCommandLine), terminal);
    com::check(terminal->get_TimeStamps(&hasTimeStamps), terminal);
    enable(IDM_RUN_SCRIPT, !isRunning());
    enable(IDM_CHECK_SCRIPT, !isRunning());
    for (const int connects : {IDM_NEW_SESSION, IDM_CONNECT_SERIAL, IDM_CONNECT_NETWORK})
        enable(connects, !isRunning());
    for (const int service : {IDM_FIRMWARE, IDM_PRESSURE_OFFSET, IDM_RECORDER, IDM_COMPASS})
        enable(service, !isRunning() && instrument_->isConnected());
    enable(IDM_DISCONNECT, !isRunning() && instrument_->isConnected());
    enable(IDM_CANCEL_SCRIPT, isRunning());
    tick(IDM_LOG, !instrument_->logFile().empty());
    tick(IDM_COMMAND_LINE, com::isTrue(showsCommandLine));
    tick(IDM_TIME_STAMPS, com::isTrue(hasTimeStamps));
    updateRecentMenu();
}

void MainWindow::updateRecentMenu() {
    const HMENU menu = GetSubMenu(GetSubMenu(GetMenu(window_), 0), kRecentMenu);
    while (DeleteMenu(menu, 0, MF_BYPOSITION))
        continue;
    const auto& paths = recent_.paths();
    const UINT state = isRunning() ? MF_GRAYED : MF_ENABLED;
    for (std::size_t i = 0; i < paths.size(); ++i)
        AppendMenuW(menu, MF_STRING | state, IDM_RECENT_FIRST + i, menuText(i, paths[i]).c_str());
    if (paths.empty()) AppendMenuW(menu, MF_STRING | MF_GRAYED, IDM_RECENT_FIRST, L"(none)");
}

void MainWindow::connect(const host::Target& target) {
    say(L"Connecting to " + wide(nameOf(target)));
    // It may take a while in which nothing else is drawn.
    UpdateWindow(status_);
    SetCursor(LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_WAIT)));
    try {
        instrument_->connect(target);
    } catch (...) {
        say(L"Not connected");
        throw;
    }
    say(L"Connected");
    showConnection();
    host::rememberConnection(instrument_->link(), kApplicationName);
    instrument_->prepare();
}

void MainWindow::beginNewSession() {
    connectBy([&] {
        const Session session = beginSession(window_, instrument_->link());
        if (session.file.empty()) return session.isBegun;
        showFile(session.file);
        return false;
    });
}

// The link is as the dialog has left it, also where that failed.
void MainWindow::connectBy(const std::function<bool()>& dialog) {
    if (isRunning()) return say(L"A script is running");
    const com::Scoped busy(isInDialog_, true);
    try {
        if (dialog()) say(L"Connected");
    } catch (...) {
        adopt();
        throw;
    }
    adopt();
}

// What fails here leaves the connection, and it is shown.
void MainWindow::adopt() {
    instrument_->adopt();
    showConnection();
    instrument_->prepare();
}

void MainWindow::service(const std::function<bool()>& dialog) {
    if (isRunning()) return say(L"A script is running");
    if (!instrument_->isConnected()) return say(L"Connect to an instrument first");
    const com::Scoped busy(isInDialog_, true);
    say(dialog() ? L"Done" : L"");
}

HWND MainWindow::outputWindow() const {
    const auto& terminal = host_->terminal();
    long number = 0;
    com::check(terminal->get_OutputWindow(&number), terminal);
    return static_cast<HWND>(LongToHandle(number));
}

// For those who have no mouse to select it with.
void MainWindow::copyOutput() {
    const HWND output = outputWindow();
    DWORD begin = 0;
    DWORD end = 0;
    SendMessageW(output, EM_GETSEL, reinterpret_cast<WPARAM>(&begin),
                 reinterpret_cast<LPARAM>(&end));
    if (begin == end) SendMessageW(output, EM_SETSEL, 0, -1);
    SendMessageW(output, WM_COPY, 0, 0);
    say(begin == end ? L"All of the output is copied" : L"What is selected is copied");
}

// In the terminal, in the place of what is there.
void MainWindow::showFile(const std::wstring& path) {
    const host::ScriptFile file = host::readScript(com::narrow(path, CP_UTF8));
    const auto& terminal = host_->terminal();
    com::check(terminal->Clear(), terminal);
    const HWND output = outputWindow();
    const auto end = static_cast<WPARAM>(SendMessageW(output, WM_GETTEXTLENGTH, 0, 0));
    SendMessageW(output, EM_SETSEL, end, static_cast<LPARAM>(end));
    SendMessageW(output, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(file.text.c_str()));
    say(path);
}

void MainWindow::disconnect(const wchar_t* why) {
    if (isRunning() || !instrument_->isConnected()) return;
    instrument_->disconnect();
    say(why);
    showConnection();
}

void MainWindow::watchConnection() {
    // A connection dialog closes the one connection before it puts the other in its place, and a
    // service tells of a lost one by itself.
    if (!isInDialog_ && instrument_->isConnected() && !instrument_->isAlive())
        disconnect(L"The connection was lost");
}

void MainWindow::showConnection() {
    const std::wstring connection = instrument_->connection();
    const std::wstring name = connection.substr(0, connection.find(L','));
    SetWindowTextW(window_, name.empty() ? L"KelDesk" : (name + L" - KelDesk").c_str());
    setPart(0, connection.empty() ? L"Not connected" : connection);
}

void MainWindow::askForScript(bool isToRun) {
    if (isRunning()) return say(L"A script is running");
    const std::wstring path = askForFile(window_, isToRun ? kScriptToRun : kScriptToCheck);
    if (path.empty()) return;
    if (isToRun) return runScript(path);
    runner_->check(path);
}

void MainWindow::runScript(const std::wstring& path) {
    if (isRunning()) return say(L"A script is running");
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        recent_.remove(path);
        writeRecentScripts(recent_.paths());
        throw host::Failure(host::ExitCode::kUsage, com::narrow(path, CP_UTF8) + " is not there");
    }
    if (!instrument_->isConnected())
        throw host::Failure(host::ExitCode::kNoConnection, "Connect to an instrument first.");
    recent_.add(path);
    writeRecentScripts(recent_.paths());
    // The terminal shows a new port from its next tick on; the first answers may be quicker.
    com::check(host_->terminal()->put_Communicator(instrument_->link().Get()), host_->terminal());
    runner_->run(path);
    setPart(1, {});
    // The user wanted to close the window and has stopped the script for that.
    if (isClosing_) PostMessageW(window_, WM_NULL, 0, 0);
}

void MainWindow::followScript(host::ScriptEvent event, const host::EventArguments& arguments) {
    if (event == host::kVariableSet) {
        variables_->setRow({arguments.text(0), arguments.text(1)});
    } else if (runningLine_.follow(event, arguments)) {
        showLine();
    }
}

void MainWindow::showLine() {
    setPart(1, runningLine_.status());
}

void MainWindow::toggleLog() {
    std::wstring path;
    if (instrument_->logFile().empty()) {
        path = askForFile(window_, kLog);
        if (path.empty()) return;
    }
    instrument_->setLogFile(path);
    say(path.empty() ? L"The log is closed" : L"Logging to " + path);
}

void MainWindow::showVariables() {
    std::vector<ListWindow::Row> rows;
    for (const host::NamedText& variable : instrument_->variables())
        rows.push_back({wide(variable.name), wide(variable.value)});
    variables_->setRows(rows);
    variables_->show();
}

void MainWindow::close() {
    if (isRunning()) {
        if (MessageBoxW(window_, L"A script is running. Stop it and close?", L"KelDesk",
                        MB_YESNO | MB_DEFBUTTON2 | MB_ICONQUESTION) != IDYES) {
            return;
        }
        // It may have ended while the question was open.
        if (isRunning()) instrument_->cancel();
    }
    isClosing_ = true;
    PostMessageW(window_, WM_NULL, 0, 0);
}

void MainWindow::keepSettings() {
    writeLook(savedLook(host_->terminal()));
}

void MainWindow::setPart(int part, const std::wstring& text) {
    SendMessageW(status_, SB_SETTEXTW, static_cast<WPARAM>(part),
                 reinterpret_cast<LPARAM>(text.c_str()));
}

}  // namespace kel::keldesk
