#pragma once
// What kelrun tells on a console while a line of the script takes its time.

#include "hosts/kelrun/message_window.h"
#include "hosts/kelrun/model/status_line.h"
#include "hosts/shared/running_line.h"

namespace kel::kelrun {

// The console of standard error.
class ErrorScreen final : public Screen {
public:
    // False when standard error goes into a pipe or file.
    bool isConsole() const;

    std::size_t column() const override;
    std::size_t width() const override;
    void write(std::wstring_view text) override;
    void moveUp(std::size_t rows, std::size_t column) override;

private:
    CONSOLE_SCREEN_BUFFER_INFO info() const;

    HANDLE handle_ = GetStdHandle(STD_ERROR_HANDLE);
};

// Shown by a timer, which runs whenever the stream lets the thread take its messages. Nothing is
// shown where standard error is no console. What is written meanwhile wipes it first.
class RunStatus final : public MessageWindow {
public:
    // `isWanted`: else nothing is shown either.
    explicit RunStatus(bool isWanted);
    ~RunStatus() override { end(); }

    // Throws com::Error.
    void follow(host::ScriptEvent event, const host::EventArguments& arguments);
    void wipe();
    // Nothing is shown from now on.
    void end();

private:
    LRESULT handle(UINT message, WPARAM first, LPARAM second) noexcept override;

    ErrorScreen screen_;
    StatusLine status_{screen_};
    host::RunningLine line_;
    bool isShowing_ = false;  // the timer runs
};

}  // namespace kel::kelrun
