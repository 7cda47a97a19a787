#include "tests/wine/support/openings.h"

#include <gtest/gtest.h>

#include <atomic>
#include <ostream>
#include <utility>

#include "com/text.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"
#include "interfaces/link_classes.h"
#include "tests/support/cases.h"
#include "tests/wine/service/fake_compass.h"
#include "tests/wine/service/fake_pressure.h"
#include "tests/wine/service/fake_recorder.h"
#include "tests/wine/support/class_object.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/late_bound.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"

namespace kel::test {
namespace {

constexpr wchar_t kFailure[] = L"The port is not open";

// The value of a setting, written as "name value"; empty where there is none.
std::string setting(const Step& step, std::string_view name) {
    for (const std::string& line : step.settings) {
        if (line.starts_with(name) && line.substr(name.size(), 1) == " ")
            return line.substr(name.size() + 1);
    }
    return {};
}

void runScript(IDispatch* object, const std::string& script) {
    com::ComPtr<IPreprocessor> preprocessor;
    com::check(object->QueryInterface(IID_PPV_ARGS(&preprocessor)));
    VARIANT_BOOL ran = VARIANT_FALSE;
    EXPECT_EQ(preprocessor->PreprocessAndRun(com::Bstr(script).get(), &ran), S_OK);
}

// Its files are all there already.
com::ComPtr<FakeRecorder> makeRecorder() {
    const auto recorder = com::makeObject<FakeRecorder>(false);
    for (int number = 1; number <= 12; ++number)
        recorder->files.push_back({L"DATA" + std::to_wstring(number + 100) + L".BIN",
                                   (number * 7919LL) << number, 45000.31 + number});
    recorder->used = 91LL << 20;
    recorder->capacity = 4LL << 30;
    recorder->operation = [recorder = recorder.Get()] {
        recorder->fire(4, {com::Variant(L"DATA101.BIN")});
        return true;
    };
    return recorder;
}

// What a component finds around it.
class Surroundings {
public:
    explicit Surroundings(const Opening& opening) : opening_(opening) {
        for (const std::string& line : opening.remembered)
            remember(line);
        link_.hasPort = opening.hasPort;
        link_.connectionString = L"COM3:";
        link_.absentPorts = {{L"COM5", 0}, {L"COM6", 0}, {L"COM8", 0}};
        link_.busyPorts = {{L"COM4", ERROR_ACCESS_DENIED}};
        link_.gatewayPassword = L"sea";
        link_.access = recorder_->controlling();
        link_.onCall = recorder_->onCall = [&](const std::string& call) {
            if (!opening_.failingCall.empty() && call.starts_with(opening_.failingCall))
                throw com::Error(E_FAIL, kFailure);
        };
    }

    // The component, with a link where it wants one. Throws com::Error.
    com::ComPtr<IDispatch> create() const {
        CLSID component{};
        com::check(CLSIDFromProgID(opening_.component.c_str(), &component));
        const auto object = kelUtils().create<IDispatch>(component);
        com::ComPtr<IKelModalDialog> dialog;
        if (SUCCEEDED(object.As(&dialog)))
            com::check(dialog->put_Communicator(link_.communicator()));
        return object;
    }

private:
    const Opening& opening_;
    const RegistrySandbox settings_{HKEY_CURRENT_USER};
    FakeLink link_;
    const ClassObject serial_{link::kSerialStreamClass, link_.port()};
    const ClassObject network_{link::kNetworkStreamClass, link_.network()};
    const com::ComPtr<FakeRecorder> recorder_ = makeRecorder();
    const ClassObject compass_{
        link::kCompassAccessClass,
        link_.around<IUnknown>(com::makeObject<FakeCompass>()->controlling()).Get()};
    const ClassObject pressure_{
        link::kPressureAccessClass,
        link_.around<IUnknown>(com::makeObject<FakePressure>()->controlling()).Get()};
    const ClassObject collections_{link::kCollectionClass, [] { return makeCollection(false); }};
};

}  // namespace

std::vector<Opening> readOpenings() {
    std::vector<Opening> openings;
    for (const Case& row : readCases("tests/wine/support/openings.txt")) {
        const Step& step = row.steps.at(0);
        Opening opening;
        opening.name = setting(step, "file");
        opening.component = L"KelUtils." + com::widen(setting(step, "class"));
        opening.caption = com::widen(setting(step, "caption"));
        opening.script = setting(step, "script");
        if (opening.script.empty()) opening.calls = step.lines;
        for (const std::string& line : step.settings)
            if (line.starts_with("remember ")) opening.remembered.push_back(line.substr(9));
        opening.hasPort = setting(step, "port") != "none";
        // "press 242 Connection settings"
        const std::string press = setting(step, "press");
        if (!press.empty()) {
            opening.button = std::stoi(press);
            opening.buttonCaption = com::widen(press.substr(press.find(' ') + 1));
        }
        // "fail StartCollection 428"
        const std::string fail = setting(step, "fail");
        if (!fail.empty()) {
            opening.failingCall = fail.substr(0, fail.find(' '));
            opening.statusLine = std::stoi(fail.substr(fail.find(' ') + 1));
        }
        openings.push_back(opening);
    }
    return openings;
}

void PrintTo(const Opening& opening, std::ostream* stream) {
    *stream << opening.name;
}

void open(const Opening& opening, const std::function<void(HWND)>& look) {
    const Surroundings scene(opening);
    const auto object = scene.create();
    DialogDriver user([&](DialogDriver& driver) {
        const HWND window = driver.waitFor(opening.caption);
        if (opening.button != 0) {
            PostMessageW(window, WM_COMMAND, static_cast<WPARAM>(opening.button), 0);
            driver.waitFor(opening.buttonCaption);
        }
        if (opening.statusLine != 0) {
            driver.waitUntil("the failure",
                             [&] { return driver.text(opening.statusLine) == kFailure; });
        }
        look(driver.window());
        PostMessageW(driver.window(), WM_COMMAND, IDCANCEL, 0);
        if (driver.window() != window) {
            driver.waitFor(opening.caption);
            PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
        }
    });
    for (const std::string& line : opening.calls)
        EXPECT_EQ(call(object.Get(), line), line.starts_with("ShowModal") ? "False" : "") << line;
    if (!opening.script.empty()) runScript(object.Get(), opening.script);
    user.runMessageLoop();
}

void openOrNot(const Opening& opening) {
    const Surroundings scene(opening);
    std::atomic<bool> isOver = false;
    DialogDriver user([&](DialogDriver& driver) {
        int button = opening.button;
        driver.waitUntil("all calls to come back", [&] {
            const std::vector<HWND> windows = driver.dialogs();
            if (button == 0 || windows.empty()) {
                driver.leave();
            } else {
                PostMessageW(windows.front(), WM_COMMAND,
                             static_cast<WPARAM>(std::exchange(button, 0)), 0);
            }
            return isOver.load();
        });
    });
    try {
        const auto object = scene.create();
        for (const std::string& line : opening.calls)
            invoke(object.Get(), line);
        com::ComPtr<IPreprocessor> preprocessor;
        VARIANT_BOOL ran = VARIANT_FALSE;
        if (!opening.script.empty() && SUCCEEDED(object.As(&preprocessor)))
            preprocessor->PreprocessAndRun(com::Bstr(opening.script).get(), &ran);
    } catch (const com::Error&) {
        // It cannot even be made.
    }
    isOver = true;
    user.runMessageLoop();
}

}  // namespace kel::test
