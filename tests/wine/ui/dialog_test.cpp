#include "ui/dialog.h"

#include <gtest/gtest.h>

#include "tests/wine/support/dialog_driver.h"

namespace kel::ui {
namespace {

using test::DialogDriver;

constexpr int kField = 100;
constexpr int kStatus = 101;
constexpr int kWork = 102;

DialogTemplate sample() {
    DialogTemplate description(L"Sample", 160, 60);
    description.add({L"EDIT",
                     L"first",
                     WS_CHILD | WS_VISIBLE | WS_BORDER | WS_TABSTOP,
                     0,
                     {4, 4, 60, 12},
                     kField});
    description.add({L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, {4, 20, 150, 10}, kStatus});
    const WORD buttons[] = {IDOK, IDCANCEL, kWork};
    for (const WORD button : buttons) {
        const auto left = static_cast<short>(4 + 50 * (&button - buttons));
        description.add(
            {L"BUTTON", L"B", WS_CHILD | WS_VISIBLE | WS_TABSTOP, 0, {left, 40, 40, 14}, button});
    }
    return description;
}

// What goes wrong and what is seen of it is up to each test.
class SampleDialog : public Dialog {
public:
    using Dialog::Dialog;

    bool failsAtFirst = false;
    int ticks = 0;
    std::string worked;

protected:
    void initialise() override {
        if (failsAtFirst) throw com::Error(E_ACCESSDENIED, L"No instrument", IID_IKelStream);
    }
    int statusLine() const override { return kStatus; }
    bool command(int identifier, int notification) override {
        if (identifier == kWork) return work();
        return Dialog::command(identifier, notification);
    }
    void timer(UINT_PTR) override {
        if (++ticks == 1) SendMessageW(window(), WM_TIMER, 1, 0);
    }

private:
    // Work that lets messages in, as a link does that waits.
    bool work() {
        const HCURSOR wait = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_WAIT));
        const HCURSOR before = GetCursor();
        {
            const Busy busy(*this);
            for (const int button : {kWork, IDOK})
                SendMessageW(window(), WM_COMMAND, static_cast<WPARAM>(button), 0);
            SetCursor(before);
            SendMessageW(window(), WM_SETCURSOR, reinterpret_cast<WPARAM>(window()), HTCLIENT);
            worked += GetCursor() == wait ? "waits " : "does not wait ";
            SendMessageW(window(), WM_COMMAND, IDCANCEL, 0);
        }
        worked += GetCursor() == before ? "ended" : "waits still";
        return true;
    }
};

TEST(DialogTest, TakesNothingButCancelWhileItIsBusy) {
    SampleDialog dialog;
    DialogDriver user([](DialogDriver& driver) {
        driver.waitFor(L"Sample");
        driver.press(kWork);
    });
    EXPECT_EQ(dialog.runModal(sample(), nullptr), IDCANCEL);
    EXPECT_EQ(dialog.worked, "waits ended");
}

TEST(DialogTest, TellsWhyItCouldNotInitialise) {
    for (const int button : {IDCANCEL, IDOK}) {
        SampleDialog dialog;
        dialog.failsAtFirst = true;
        DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(L"Sample");
            EXPECT_EQ(driver.text(kStatus), L"No instrument");
            driver.press(button);
        });
        if (button == IDOK) {
            EXPECT_EQ(dialog.runModal(sample(), nullptr), IDOK);
            continue;
        }
        try {
            dialog.runModal(sample(), nullptr);
            ADD_FAILURE() << "the failure is lost";
        } catch (const com::Error& failure) {
            EXPECT_EQ(failure.code(), E_ACCESSDENIED);
            EXPECT_EQ(failure.interfaceId(), IID_IKelStream);
        }
    }
}

TEST(DialogTest, ATimerIsNotReentered) {
    SampleDialog dialog;
    DialogDriver user([&](DialogDriver& driver) {
        driver.waitFor(L"Sample");
        driver.send(driver.window(), WM_TIMER, 1);
        driver.send(driver.window(), WM_TIMER, 1);
        driver.press(IDOK);
    });
    dialog.runModal(sample(), nullptr);
    EXPECT_EQ(dialog.ticks, 2);
}

TEST(DialogTest, AMissingTemplateIsAnError) {
    SampleDialog dialog;
    EXPECT_THROW(dialog.runModal(WORD{9999}, nullptr), com::Error);
    EXPECT_THROW(dialog.create(9999, nullptr), com::Error);
}

TEST(DialogTest, TheEndOfTheProgramEndsIt) {
    SampleDialog dialog;
    PostQuitMessage(7);
    EXPECT_NE(dialog.runModal(sample(), nullptr), IDOK);
    MSG message{};
    EXPECT_FALSE(GetMessageW(&message, nullptr, 0, 0));
    EXPECT_EQ(message.wParam, 7u);
}

}  // namespace
}  // namespace kel::ui
