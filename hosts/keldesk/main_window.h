#pragma once
// The main window: menu, terminal and status bar.

#include <windows.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "hosts/keldesk/accelerators.h"
#include "hosts/keldesk/instrument.h"
#include "hosts/keldesk/list_window.h"
#include "hosts/keldesk/model/desk_options.h"
#include "hosts/keldesk/script_runner.h"
#include "hosts/keldesk/terminal_host.h"
#include "hosts/shared/running_line.h"
#include "ui/model/recent_paths.h"

namespace kel::keldesk {

class MainWindow {
public:
    // Throws host::Failure (a component is not registered), com::Error.
    explicit MainWindow(const DeskOptions& options);
    ~MainWindow();
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    // Shows it and does what the options ask for, until the user closes it.
    void run(const DeskOptions& options);

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wide, LPARAM longer);
    LRESULT handle(UINT message, WPARAM wide, LPARAM longer);
    // Tells the user of a failure.
    template <class Deed>
    void attempt(Deed&& deed) noexcept;

    void arrange();
    void command(int command);
    void change(int command);
    void updateMenu();
    void updateRecentMenu();

    void connect(const host::Target& target);
    void beginNewSession();
    void connectBy(const std::function<bool()>& dialog);
    void adopt();
    void service(const std::function<bool()>& dialog);
    void showFile(const std::wstring& path);
    void disconnect(const wchar_t* why);
    void watchConnection();
    void askForScript(bool isToRun);
    void runScript(const std::wstring& path);
    void toggleLog();
    void showVariables();
    void toggle(HRESULT (STDMETHODCALLTYPE IKelTerminal3::*get)(VARIANT_BOOL*),
                HRESULT (STDMETHODCALLTYPE IKelTerminal3::*put)(VARIANT_BOOL));
    void followScript(host::ScriptEvent event, const host::EventArguments& arguments);
    void showLine();
    HWND outputWindow() const;
    void copyOutput();
    void close();
    void keepSettings();

    void say(const std::wstring& text) { setPart(2, text); }
    void setPart(int part, const std::wstring& text);
    void showConnection();
    bool isRunning() const { return instrument_ && instrument_->isRunning(); }

    HWND window_ = nullptr;
    HWND status_ = nullptr;
    std::unique_ptr<TerminalHost> host_;
    std::unique_ptr<Instrument> instrument_;
    std::unique_ptr<ScriptRunner> runner_;
    std::unique_ptr<ListWindow> variables_;
    std::optional<Accelerators> accelerators_;
    ui::RecentPaths recent_;
    host::RunningLine runningLine_;
    // A dialog of the library works with the instrument.
    bool isInDialog_ = false;
    // The user has closed the window while a script ran.
    bool isClosing_ = false;
};

}  // namespace kel::keldesk
