// The four services on the bench's link, with its own access objects and a virtual instrument:
// beside a terminal that is alive, and with every call failing.
#include <algorithm>
#include <atomic>

#include "bench/instrument/card.h"
#include "hosts/trace/KelTrace.h"
#include "resources/resource_ids.h"
#include "tests/wine/link/access_test.h"
#include "tests/wine/service/live_terminal.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/registry_sandbox.h"
#include "tests/wine/support/temporary_folder.h"

namespace kel::test {
namespace {

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
    long restoring;  // so many of the last calls, from the first on that restores the port
    int wakes;       // the instrument so often where the terminal sees it
    // Asked in the end, and what the answer tells of the service's work.
    const char* question;
    const char* answer;
};

const Service kServices[] = {
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
     {{IDC_COMPASS_START}, {IDC_COMPASS_STOP, IDC_COMPASS_HEADING}, {IDC_COMPASS_START}},
     0,
     1,
     "compass",
     "Compass: ready"},
};

// How the status lines begin as long as nothing fails.
constexpr const wchar_t* kOrdinary[] = {
    L"Click", L"Loading",     L"The firmware is",          L"Verifying", L"Comparing", L"Reading",
    L"Begin", L"Compass ini", L"The download is complete", L"Horizontal"};

class BenchServicesTest : public bench::test::AccessTest,
                          public testing::WithParamInterface<Service> {
protected:
    static bench::InstrumentOptions instrument() {
        bench::InstrumentOptions options;
        options.sensors.pressureNoise = 0;
        return options;
    }

    BenchServicesTest() {
        const std::string folder = com::narrow(folder_.path());
        RegSetKeyValueA(HKEY_CURRENT_USER, "Software\\Kelvra\\Components\\Recorder",
                        "DownloadFolder", REG_SZ, folder.c_str(), folder.size() + 1);
    }

    void setUp(bench::InstrumentOptions options, const wchar_t* linkScale) {
        connect(std::move(options), 50, linkScale);
        ASSERT_EQ(stream->put_IdleProcessing(VARIANT_FALSE), S_OK);
    }

    // Shows the dialog to a user who does all the steps as far as possible, whatever fails, and
    // closes it then. True when the service has done its work.
    bool serve(IKelCommunicator* communicator, HRESULT* code) {
        const Service& service = GetParam();
        com::ComPtr<IKelModalDialog> dialog =
            kelUtils().create<IKelModalDialog>(*service.component);
        com::ComPtr<IUploadFirmwareDialog> upload;
        if (SUCCEEDED(dialog.As(&upload))) upload->put_FilePath(com::Bstr(firmware_).get());
        com::ComPtr<IPressureOffsetDialog> pressure;
        if (SUCCEEDED(dialog.As(&pressure))) pressure->put_UseMetricUnits(VARIANT_TRUE);
        dialog->put_Communicator(communicator);
        VARIANT_BOOL result = 7;
        {
            std::atomic<bool> hasReturned = false;
            DialogDriver user([&](DialogDriver& driver) { use(driver, hasReturned); });
            *code = dialog->ShowModal(0, &result);
            hasReturned = true;
        }
        com::ComPtr<ICompassCalibDialog2> compass;
        if (SUCCEEDED(dialog.As(&compass))) compass->get_ScoresRead(&result);
        if (service.component == &CLSID_RecorderDialog) return hasAllFiles();
        return result == VARIANT_TRUE;
    }

    void use(DialogDriver& driver, const std::atomic<bool>& hasReturned) {
        const Service& service = GetParam();
        HWND shownWindow = nullptr;
        isTold_ = false;
        const auto isGone = [&] {
            for (const HWND each : driver.dialogs()) {
                if (contentOfDialog(each) == service.caption) {
                    shownWindow = each;
                } else {
                    isTold_ = true;
                    PostMessageW(each, WM_COMMAND, IDYES, 0);
                }
            }
            return hasReturned || (shownWindow && !IsWindow(shownWindow));
        };
        const auto shown = [&](int control) {
            wchar_t text[300] = L"";
            GetDlgItemTextW(shownWindow, control, text, 300);
            return std::wstring(text);
        };
        const auto hasFailed = [&] {
            const std::wstring status = shown(service.statusLine);
            isTold_ = isTold_ || !(status.empty() || std::ranges::any_of(kOrdinary, [&](auto text) {
                                       return status.starts_with(text);
                                   }));
            return isTold_.load();
        };
        driver.waitUntil("it is shown", [&] { return isGone() || shownWindow; });
        for (const UserStep& step : service.steps) {
            driver.waitUntil("the next step", [&] {
                return isGone() || hasFailed() ||
                       ((step.button == 0 ||
                         IsWindowEnabled(GetDlgItem(shownWindow, step.button))) &&
                        (step.control == 0 || (!shown(step.control).empty() &&
                                               shown(step.control).starts_with(step.text))));
            });
            if (isGone()) return;
            // What is shown together is read one by one.
            hasFailed();
            PostMessageW(GetDlgItem(shownWindow, step.button), BM_CLICK, 0, 0);
        }
        driver.waitUntil("it is closed", [&] {
            if (!isGone()) PostMessageW(shownWindow, WM_COMMAND, IDCANCEL, 0);
            return isGone();
        });
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

    static std::wstring contentOfDialog(HWND window) {
        wchar_t text[100] = L"";
        return {text, static_cast<std::size_t>(InternalGetWindowText(window, text, 100))};
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

    // The user has seen a failure.
    std::atomic<bool> isTold_ = false;
    const RegistrySandbox settings_{HKEY_CURRENT_USER};
    const TemporaryFolder folder_;
    const std::wstring firmware_ = folder_.file(L"new.bin", "abcdefghijklmnopqrstuvwxyz");
};

TEST_P(BenchServicesTest, ATerminalBesideItTakesNothingAndGoesOn) {
    const Service& service = GetParam();
    setUp(instrument(), L"2");
    stream->put_IdleProcessing(VARIANT_TRUE);
    LiveTerminal terminal(link.Get());
    VARIANT_BOOL isAwake = VARIANT_FALSE;
    EXPECT_EQ(link->WakeUpInstrument(&isAwake), S_OK);
    EXPECT_EQ(isAwake, VARIANT_TRUE);
    const std::wstring greeting = terminal.text();
    EXPECT_TRUE(greeting.ends_with(L"\r\n>"));
    HRESULT code = E_FAIL;
    EXPECT_TRUE(serve(link.Get(), &code));
    EXPECT_EQ(code, S_OK);
    EXPECT_EQ(echoWindow(), HandleToLong(terminal.pane()));
    std::wstring expected = greeting;
    for (int i = 0; i < service.wakes; ++i)
        expected += greeting;
    EXPECT_EQ(terminal.text(), expected);
    VARIANT_BOOL isSent = VARIANT_FALSE;
    stream->WriteString(com::Bstr(std::string_view(service.question)).get(), VARIANT_TRUE, 0,
                        &isSent);
    terminal.runUntilPromptAfter(expected);
    expected += com::widen(std::string(service.question) + "\r\n" + service.answer);
    EXPECT_EQ(terminal.text().substr(0, expected.size()), expected);
    EXPECT_TRUE(terminal.text().ends_with(L"\r\n>"));
}

// Every call of the dialog on the link and on what it makes of the link's classes, until a run has
// fewer of them.
TEST_P(BenchServicesTest, EveryCallMayFail) {
    setUp(instrument(), L"10");
    const auto session = kelTrace().create<ITraceSession>(__uuidof(TraceSession));
    com::ComPtr<IKelCommunicator> traced;
    ASSERT_EQ(session->Attach(link.Get(), &traced), S_OK);
    com::ComPtr<IKelStream> port;
    ASSERT_EQ(traced->get_Port(&port), S_OK);
    port->put_EchoWindow(window.number());
    HRESULT code = E_FAIL;
    long calls = 0;
    bool isDone = false;
    for (long failing = 1; failing < 200; ++failing) {
        SCOPED_TRACE(failing);
        long before = 0;
        session->get_CallCount(&before);
        ASSERT_EQ(session->FailCall(failing, E_ACCESSDENIED), S_OK);
        isDone = serve(traced.Get(), &code);
        session->get_CallCount(&calls);
        calls -= before;
        session->ClearFailure();
        EXPECT_TRUE(isDone || isTold_ || code != S_OK);
        if (code != S_OK) {
            EXPECT_EQ(code, E_ACCESSDENIED);
            EXPECT_NE(takeError().value().description, L"");
        }
        expectNothingLeft();
        EXPECT_TRUE(isRestored(port.Get()) || calls - failing < GetParam().restoring);
        // The last run has no such call.
        if (calls < failing) break;
    }
    EXPECT_TRUE(isDone);
    port.Reset();
    EXPECT_EQ(session->Close(), S_OK);
}

// The dialog's dialogue, without the instrument and its link. The recorder is not traced.
TEST_P(BenchServicesTest, AReplayDoesTheSame) {
    setUp(instrument(), L"10");
    const com::Bstr file(folder_.path() + L".trace");
    const bool isTraced = GetParam().component != &CLSID_RecorderDialog;
    for (const bool isReplay : {false, true}) {
        const auto session = kelTrace().create<ITraceSession>(__uuidof(TraceSession));
        ASSERT_EQ(isReplay ? session->Replay(file.get(), 1) : session->Record(file.get()), S_OK);
        com::ComPtr<IKelCommunicator> traced;
        ASSERT_EQ(session->Attach(isReplay ? nullptr : link.Get(), &traced), S_OK);
        HRESULT code = E_FAIL;
        const bool isDone = serve(traced.Get(), &code);
        const bool isAbsent = isReplay && !isTraced;
        EXPECT_EQ(code, isAbsent ? E_NOINTERFACE : S_OK);
        EXPECT_EQ(isDone, !isAbsent);
        com::Bstr difference;
        EXPECT_EQ(session->get_Difference(difference.put()), S_OK);
        EXPECT_EQ(com::narrow(difference.get()), "");
        EXPECT_EQ(session->Close(), S_OK);
        server.reset();
    }
    DeleteFileW(file.get());
}

// An instrument that refuses, or is gone after, so many commands: what the access objects make of
// that.
TEST_P(BenchServicesTest, TheInstrumentMayFail) {
    for (const bool vanishes : {false, true}) {
        bool isDone = false;
        for (int commands = 0; !isDone; ++commands) {
            SCOPED_TRACE((vanishes ? "gone after " : "refuses after ") + std::to_string(commands));
            ASSERT_LT(commands, 50);
            auto options = instrument();
            (vanishes ? options.vanishAfter : options.failAfter) = commands;
            setUp(options, L"10");
            HRESULT code = E_FAIL;
            isDone = serve(link.Get(), &code);
            if (code != S_OK) {
                EXPECT_NE(takeError().value().description, L"");
            }
            expectNothingLeft();
            EXPECT_TRUE(isDone || isTold_ || code != S_OK);
            EXPECT_TRUE(isRestored(stream.Get()));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Services, BenchServicesTest, testing::ValuesIn(kServices),
                         [](const auto& service) { return std::string(service.param.name); });

}  // namespace
}  // namespace kel::test
