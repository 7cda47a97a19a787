#pragma once
// The four services on the bench's link, with its own access objects and a virtual instrument, and
// a user who works through each as far as it gets.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <optional>
#include <set>

#include "bench/instrument/card.h"
#include "resources/resource_ids.h"
#include "tests/wine/link/access_test.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/late_bound.h"
#include "tests/wine/support/registry_sandbox.h"
#include "tests/wine/support/temporary_folder.h"

namespace kel::test {

// What a user does next: presses a button that can be pressed, or waits (0), once a control begins
// so; nothing before there is any.
struct UserStep {
    int button;
    int control = 0;
    const wchar_t* text = L"";
};

struct Service {
    const char* name;
    const CLSID* component;
    const wchar_t* caption;
    int statusLine;
    std::vector<UserStep> steps;
    long restoring = 0;  // so many of the last calls, from the first on that restores the port
    int wakes = 0;       // the instrument so often where the terminal sees it
    // Asked in the end, and what the answer tells of the service's work.
    const char* question = "";
    const char* answer = "";
};

inline const Service kServices[] = {
    {"Firmware",
     &CLSID_UploadFirmwareDialog,
     L"Update firmware - new.bin",
     IDC_FIRMWARE_STATUS,
     {{IDOK}, {0, IDC_FIRMWARE_STATUS, L"the end"}},
     4,
     1,
     "firmware read main 0 8",
     "DATA 8 AEEF2A50\r\nabcdefgh"},
    {"Pressure",
     &CLSID_PressureOffsetDialog,
     L"Pressure Offset",
     IDC_PRESSURE_STATUS,
     {{IDC_PRESSURE_START},
      {IDC_PRESSURE_STOP, IDC_PRESSURE_MEAN},
      {IDC_PRESSURE_SET},
      {0, IDC_PRESSURE_STATUS, L"the end"}},
     2,
     1,
     "pressoffset",
     "Pressure Offset: -10.1"},
    {"Recorder",
     &CLSID_RecorderDialog,
     L"Recorder",
     IDC_RECORDER_STATUS,
     {{IDC_RECORDER_SELECT_ALL, IDC_RECORDER_STATE, L"Ready"},
      {IDC_RECORDER_DOWNLOAD},
      {IDCANCEL, IDC_RECORDER_TIME, L"Done"}},
     0,
     0,
     "card rate",
     "Rate: 57600"},
    {"Compass",
     &CLSID_CompassCalibDialog,
     L"Compass calibration",
     IDC_COMPASS_TEXT,
     {{IDC_COMPASS_START},
      {IDC_COMPASS_STOP, IDC_COMPASS_HEADING},
      {IDC_COMPASS_START, IDC_COMPASS_TEXT, L"Horizontal"}},
     0,
     1,
     "compass",
     "Compass: ready"},
};

// How the status lines begin as long as nothing fails.
inline constexpr const wchar_t* kOrdinary[] = {
    L"Click", L"Loading",     L"The firmware is as",       L"Verifying",  L"Comparing",  L"Reading",
    L"Begin", L"Compass ini", L"The download is complete", L"Horizontal", L"Connecting", L"Select"};

class BenchServices : public bench::test::AccessTest {
protected:
    static bench::InstrumentOptions instrument() {
        bench::InstrumentOptions options;
        options.sensors.pressureNoise = 0;
        return options;
    }

    BenchServices() { remember("Recorder", "DownloadFolder", com::narrow(folder_.path())); }

    void setUp(bench::InstrumentOptions options, const wchar_t* linkScale) {
        connect(std::move(options), 50, linkScale);
        ASSERT_EQ(stream->put_IdleProcessing(VARIANT_FALSE), S_OK);
    }

    // Shows the dialog to a user who does all the steps as far as possible, whatever fails, and
    // closes it then. True when the service has done its work.
    bool serve(const Service& service, IKelCommunicator* communicator,
               com::ComPtr<IKelModalDialog> dialog = {}) {
        if (!dialog) dialog = kelUtils().create<IKelModalDialog>(*service.component);
        // Each is a property of one of them.
        invoke(dialog.Get(), "FilePath = file", {{"file", com::Variant(firmware_)}});
        invoke(dialog.Get(), "UseMetricUnits = true");
        dialog->put_Communicator(communicator);
        VARIANT_BOOL result = 7;
        {
            std::atomic<bool> hasReturned = false;
            DialogDriver user([&](DialogDriver& driver) { use(service, driver, hasReturned); });
            code_ = dialog->ShowModal(0, &result);
            hasReturned = true;
        }
        com::ComPtr<ICompassCalibDialog2> compass;
        if (SUCCEEDED(dialog.As(&compass))) compass->get_ScoresRead(&result);
        if (service.component == &CLSID_RecorderDialog) return hasAllFiles();
        return result == VARIANT_TRUE;
    }

    void use(const Service& service, DialogDriver& driver, const std::atomic<bool>& hasReturned) {
        HWND shownWindow = nullptr;
        isTold_ = false;
        told_.clear();
        const auto isGone = [&] {
            for (const HWND each : driver.dialogs()) {
                if (captionOf(each) == service.caption) {
                    shownWindow = each;
                } else {
                    constexpr int kMessageOfBox = 0xFFFF;
                    isTold_ = true;
                    told_.insert(com::narrow(captionOf(GetDlgItem(each, kMessageOfBox))));
                    PostMessageW(each, WM_COMMAND, IDYES, 0);
                }
            }
            return hasReturned || (shownWindow && !IsWindow(shownWindow));
        };
        // In one piece, and from the dialog's thread: not while it changes it.
        const auto shown = [&](int control) {
            wchar_t text[300] = L"";
            GetWindowTextW(controlIn(shownWindow, control), text, 300);
            return std::wstring(text);
        };
        const auto hasFailed = [&] {
            const std::wstring status = shown(service.statusLine);
            const bool isOrdinary =
                status.empty() || status == L"The firmware is loaded" ||
                std::ranges::any_of(kOrdinary, [&](auto text) { return status.starts_with(text); });
            if (!isOrdinary) told_.insert(com::narrow(status));
            isTold_ = isTold_ || !isOrdinary;
            return isTold_.load();
        };
        driver.waitUntil("it is shown", [&] { return isGone() || shownWindow; });
        for (const UserStep& step : service.steps) {
            const auto begin = std::chrono::steady_clock::now();
            driver.waitUntil("the next step", [&] {
                gaveUp_ = patience_ && std::chrono::steady_clock::now() - begin > *patience_;
                return isGone() || hasFailed() || gaveUp_ ||
                       ((step.button == 0 ||
                         IsWindowEnabled(controlIn(shownWindow, step.button))) &&
                        (step.control == 0 || (!shown(step.control).empty() &&
                                               shown(step.control).starts_with(step.text))));
            });
            if (isGone()) return;
            if (gaveUp_) break;
            // What is shown together is read one by one.
            hasFailed();
            PostMessageW(controlIn(shownWindow, step.button), BM_CLICK, 0, 0);
        }
        const auto left = std::chrono::steady_clock::now();
        driver.waitUntil("it is closed", [&] {
            hasFailed();
            if (!isGone()) PostMessageW(shownWindow, WM_COMMAND, IDCANCEL, 0);
            return isGone();
        });
        leaving_ = std::max(leaving_, std::chrono::steady_clock::now() - left);
    }

    // That a port shows and pumps as it did before; else it is put right.
    bool isRestored(IKelStream* port) {
        long echo = 0;
        VARIANT_BOOL isIdle = 7;
        EXPECT_EQ(port->get_EchoWindow(&echo), S_OK);
        EXPECT_EQ(port->get_IdleProcessing(&isIdle), S_OK);
        port->put_EchoWindow(window.number());
        port->put_IdleProcessing(VARIANT_FALSE);
        return echo == window.number() && isIdle == VARIANT_FALSE;
    }

    // No object, and with that no thread of the recorder; no file that is not whole.
    void expectNothingLeft() {
        EXPECT_EQ(kelUtils().canUnloadNow(), S_OK);
        EXPECT_EQ(folder_.names(), std::vector<std::wstring>{L"new.bin"});
    }

    // Those of the card, which go.
    bool hasAllFiles() {
        bool hasAll = true;
        const bench::Card card(bench::CardKind::kUsual);
        for (const bench::CardFile& file : card.files()) {
            const std::wstring name = com::widen(file.name);
            const std::string content = folder_.content(name);
            hasAll = hasAll && content == bench::cardContent(file, 0, file.size);
            EXPECT_TRUE(content == "none" || content == bench::cardContent(file, 0, file.size));
            DeleteFileW((folder_.path() + L"\\" + name).c_str());
        }
        return hasAll;
    }

    // What ShowModal gave.
    HRESULT code_ = E_FAIL;
    // The user has seen a failure: its words, once nobody uses the dialog any more.
    std::atomic<bool> isTold_ = false;
    std::set<std::string> told_;
    // How long the user waits for a step, and whether that was too long.
    std::optional<std::chrono::milliseconds> patience_;
    bool gaveUp_ = false;
    // The longest time from his Cancel until a dialog was closed.
    std::chrono::steady_clock::duration leaving_{};
    const RegistrySandbox settings_{HKEY_CURRENT_USER};
    const TemporaryFolder folder_;
    const std::wstring firmware_ = folder_.file(L"new.bin", "abcdefghijklmnopqrstuvwxyz");
};

}  // namespace kel::test
