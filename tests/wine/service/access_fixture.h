#pragma once
// What the tests of services with an access object share: one log for it and the link,
// and a user.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "com/variant.h"
#include "tests/wine/support/class_object.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/dialog_faults.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/library.h"

namespace kel::test {

// The last calls of every run that had a window.
inline constexpr char kRestoring[] = "EchoWindow = 42\nIdleProcessing = -1\n";

template <class Dialog, class Access>
class AccessTest : public testing::Test {
protected:
    // `polls`: calls that come as often as they like, and do not stand in the log.
    AccessTest(REFCLSID dialog, REFCLSID access, const wchar_t* caption,
               std::set<std::string> polls)
        : caption_(caption),
          polls_(std::move(polls)),
          access_(com::makeObject<Access>()),
          class_(std::make_unique<ClassObject>(access, access_->controlling())),
          dialog_(kelUtils().create<Dialog>(dialog)) {
        link_.echoWindow = 42;
        link_.onCall = access_->onCall = [this](const std::string& call) { tell(call); };
        dialog_->put_Communicator(link_.communicator());
    }

    // Shows the dialog to a user. True when it ended with success.
    bool show(const std::function<void(DialogDriver&)>& steps, HRESULT expected = S_OK) {
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(caption_);
            steps(driver);
        });
        EXPECT_EQ(dialog_->ShowModal(0, &result), expected);
        return result == VARIANT_TRUE;
    }
    // Where it fails before there is a window.
    HRESULT showNothing() {
        VARIANT_BOOL result = 7;
        const HRESULT code = dialog_->ShowModal(0, &result);
        EXPECT_EQ(result, VARIANT_FALSE);
        return code;
    }

    // What a message box that comes says, which is closed then.
    static std::wstring answerBox(DialogDriver& driver, const std::wstring& caption) {
        const HWND box = driver.waitFor(caption);
        const HICON stop = LoadIconW(nullptr, MAKEINTRESOURCEW(32513));
        std::wstring text;
        for (HWND child = nullptr; (child = FindWindowExW(box, child, L"Static", nullptr));) {
            const auto icon = driver.send(child, STM_GETICON);
            wchar_t part[128] = L"";
            if (icon == 0) InternalGetWindowText(child, part, static_cast<int>(std::size(part)));
            text += part;
            if (reinterpret_cast<HICON>(icon) == stop) text += L"(stop) ";
        }
        PostMessageW(box, WM_COMMAND, IDOK, 0);
        driver.waitUntil("the box is closed", [&] { return !IsWindow(box); });
        return text;
    }

    // Presses a button that can be pressed, and waits until that is done.
    static void click(DialogDriver& driver, int button) {
        if (IsWindowEnabled(driver.control(button))) driver.send(driver.control(button), BM_CLICK);
    }

    // Lets the dialog poll without waiting for its timer.
    static void poll(DialogDriver& driver) { driver.send(driver.window(), WM_TIMER, 1); }

    void tell(const std::string& call) {
        if (!polls_.contains(call)) log_ += call + "\n";
    }

    std::string takeLog() { return std::exchange(log_, {}); }

    const std::wstring caption_;
    const std::set<std::string> polls_;
    std::string log_;
    FakeLink link_;
    com::ComPtr<Access> access_;
    std::unique_ptr<ClassObject> class_;
    com::ComPtr<Dialog> dialog_;
};

}  // namespace kel::test
