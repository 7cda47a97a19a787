// The pressure offset dialog: what it does with the samples, and what it sends to the instrument.
#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "tests/wine/service/access_fixture.h"
#include "tests/wine/service/fake_pressure.h"

namespace kel::test {
namespace {

constexpr char kPressureOpening[] =
    "Link.WakeUpInstrument\nAttach\nEchoWindow\nIdleProcessing\nEchoWindow = 0\n"
    "IdleProcessing = -1\n";
constexpr char kSet[] =
    "Link.WakeUpInstrument\nOffset\nMeanPressure\n"
    "Link.SendCommand \"pressoffset set  -1.250\" OK 3000\n";
constexpr char kSave[] = "Link.SendCommand \"savesetup\" OK 3000\n";
constexpr char kLeave[] = "StopCollection\nLink.SendBreak 300\n";

class PressureTest : public AccessTest<IPressureOffsetDialog, FakePressure> {
protected:
    PressureTest()
        : AccessTest(CLSID_PressureOffsetDialog, link::kPressureAccessClass, L"Pressure Offset",
                     {"NewData"}) {
        access_->current = 20;
        access_->mean = 10;
        access_->offset = 8.75;
    }

    // Which of the four buttons can be pressed.
    static std::wstring buttons(DialogDriver& driver) {
        std::wstring letters;
        const std::pair<int, wchar_t> all[] = {{IDC_PRESSURE_START, L's'},
                                               {IDC_PRESSURE_STOP, L'p'},
                                               {IDC_PRESSURE_SET, L'o'},
                                               {IDCANCEL, L'c'}};
        for (const auto& [button, letter] : all)
            if (IsWindowEnabled(driver.control(button))) letters += letter;
        return letters;
    }
};

TEST_F(PressureTest, SetsTheOffsetFromTheMean) {
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        EXPECT_EQ(driver.text(IDC_PRESSURE_CURRENT_LABEL), L"Current Measured Pressure (psi):");
        EXPECT_EQ(driver.text(IDC_PRESSURE_MEAN_LABEL), L"Calculated Mean Pressure (psi):");
        EXPECT_EQ(buttons(driver), L"soc");
        driver.key('S', VK_MENU);
        driver.waitUntil("collecting", [&] { return buttons(driver) == L"pc"; });
        EXPECT_EQ(driver.focus(), driver.control(IDC_PRESSURE_STOP));
        access_->samples = 1;
        driver.waitUntil("the mean", [&] { return driver.text(IDC_PRESSURE_MEAN) == L"14.5"; });
        EXPECT_EQ(driver.text(IDC_PRESSURE_CURRENT), L"29.0");
        EXPECT_EQ(faultsOf(driver.window()), std::vector<std::string>());
        driver.key('P', VK_MENU);
        driver.waitUntil("stopped", [&] { return buttons(driver) == L"soc"; });
        EXPECT_EQ(driver.focus(), driver.control(IDC_PRESSURE_SET));
        driver.key('O', VK_MENU);
    }));
    EXPECT_EQ(takeLog(), std::string(kPressureOpening) +
                             "StartCollection\nCurrentPressure\nMeanPressure\nStopCollection\n" +
                             kSet + kSave + kRestoring);
}

TEST_F(PressureTest, HoweverItIsClosedTheInstrumentIsLeftInPeace) {
    access_->stops = false;
    EXPECT_EQ(dialog_->put_UseMetricUnits(1), S_OK);
    VARIANT_BOOL isMetric = 7;
    EXPECT_EQ(dialog_->get_UseMetricUnits(&isMetric), S_OK);
    EXPECT_EQ(isMetric, VARIANT_TRUE);
    const std::function<void(DialogDriver&)> ways[] = {
        [](DialogDriver& driver) { driver.press(IDCANCEL); },
        [](DialogDriver& driver) { driver.key(VK_ESCAPE); },
        [](DialogDriver& driver) { PostMessageW(driver.window(), WM_CLOSE, 0, 0); },
    };
    for (const auto& way : ways) {
        EXPECT_FALSE(show([&](DialogDriver& driver) {
            EXPECT_EQ(driver.text(IDC_PRESSURE_MEAN_LABEL), L"Calculated Mean Pressure (dbar):");
            access_->samples = 1;
            poll(driver);
            EXPECT_EQ(driver.text(IDC_PRESSURE_MEAN), L"10.0");
            way(driver);
        }));
        EXPECT_EQ(takeLog(), std::string(kPressureOpening) + "CurrentPressure\nMeanPressure\n" +
                                 kLeave + kRestoring);
    }
}

TEST_F(PressureTest, ARefusalIsToldAndLeavesTheDialogOpen) {
    access_->stops = false;
    const auto refuse = [&](const char* name, std::deque<bool> answers) {
        return [=, this] { link_.answers[name] = answers; };
    };
    const struct {
        int button;
        std::function<void()> prepare;
        const wchar_t* text;
        std::string calls;
        const wchar_t* buttons;
    } cases[] = {
        {IDC_PRESSURE_SET, refuse("Link.WakeUpInstrument", {true, false}),
         L"Unable to connect with the instrument", "Link.WakeUpInstrument\n", L"soc"},
        {IDC_PRESSURE_SET, refuse("Link.SendCommand", {false}), L"Unable to update pressure offset",
         kSet, L"soc"},
        {IDC_PRESSURE_SET, refuse("Link.SendCommand", {true, false}), L"Unable to update setup",
         std::string(kSet) + kSave, L"soc"},
        {IDC_PRESSURE_STOP, [] {}, L"Unable to stop calibration!",
         "StartCollection\nStopCollection\n", L"pc"},
        {IDC_PRESSURE_START, [&] { access_->starts = false; }, L"Unable to start calibration!",
         "StartCollection\n", L"soc"},
    };
    for (const auto& row : cases) {
        row.prepare();
        EXPECT_FALSE(show([&](DialogDriver& driver) {
            if (row.button == IDC_PRESSURE_STOP) click(driver, IDC_PRESSURE_START);
            driver.press(row.button);
            EXPECT_EQ(answerBox(driver, L"Error"), L"(stop) " + std::wstring(row.text));
            driver.waitFor(caption_);
            EXPECT_EQ(buttons(driver), row.buttons);
            driver.press(IDCANCEL);
        }));
        EXPECT_EQ(takeLog(), kPressureOpening + row.calls + kLeave + kRestoring);
    }
}

TEST_F(PressureTest, WithoutAnInstrumentThereIsNoDialog) {
    link_.answers["Link.WakeUpInstrument"] = {false};
    {
        DialogDriver user([](DialogDriver& driver) {
            EXPECT_EQ(answerBox(driver, L"Error"), L"(stop) Unable to connect with the instrument");
        });
        EXPECT_EQ(showNothing(), S_OK);
    }
    EXPECT_EQ(takeLog(), "Link.WakeUpInstrument\n");
    link_.hasPort = false;
    EXPECT_EQ(showNothing(), E_POINTER);
    class_.reset();
    class_ = std::make_unique<ClassObject>(link::kPressureAccessClass, nullptr);
    EXPECT_EQ(showNothing(), E_FAIL);
    dialog_->put_Communicator(nullptr);
    EXPECT_EQ(showNothing(), E_INVALIDARG);
    EXPECT_EQ(dialog_->ShowModal(0, nullptr), E_POINTER);
}

// The link runs the message loop while it waits.
TEST_F(PressureTest, OneButtonAtATimeAndNoPollMeanwhile) {
    HWND window = nullptr;
    access_->onCall = link_.onCall = [&](const std::string& call) {
        tell(call);
        if (call == "CurrentPressure" || call.starts_with("Link.SendCommand")) {
            access_->samples = 1;
            SendMessageW(window, WM_TIMER, 1, 0);
        }
        if (call == "CurrentPressure") SendMessageW(window, WM_COMMAND, IDC_PRESSURE_START, 0);
        if (call.starts_with("Link.SendCommand")) SendMessageW(window, WM_COMMAND, IDCANCEL, 0);
    };
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        window = driver.window();
        access_->samples = 1;
        driver.waitUntil("collecting", [&] { return buttons(driver) == L"pc"; });
        click(driver, IDC_PRESSURE_STOP);
        driver.press(IDC_PRESSURE_SET);
    }));
    const std::string log = takeLog();
    EXPECT_NE(log.find("CurrentPressure\nStartCollection\nMeanPressure\n"), log.npos) << log;
    EXPECT_NE(log.find(std::string(kSet) + kSave + kRestoring), log.npos) << log;
}

TEST_F(PressureTest, ALinkThatIsGoneDoesNotKeepTheDialogOpen) {
    link_.onCall = [](const std::string& call) {
        if (call == "Link.SendBreak 300") throw com::Error(E_FAIL, L"the line is cut");
    };
    EXPECT_FALSE(show([&](DialogDriver& driver) {
        driver.send(driver.window(), WM_COMMAND, IDCANCEL);
        EXPECT_EQ(driver.text(IDC_PRESSURE_STATUS), L"the line is cut");
        driver.send(driver.window(), WM_COMMAND, IDCANCEL);
    }));
}

}  // namespace
}  // namespace kel::test
