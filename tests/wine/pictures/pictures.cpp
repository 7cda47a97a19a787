// Opens every window of the library as pictures.txt tells and takes its picture.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

#include "com/text.h"
#include "tests/support/cases.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/late_bound.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/picture.h"

namespace kel::test {
namespace {

void pumpUntil(const std::atomic<bool>& done) {
    MSG message;
    while (!done) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
}

// The value of a setting, written as "name value".
std::string setting(const Step& step, std::string_view name) {
    for (const std::string& line : step.settings) {
        if (line.starts_with(name) && line.substr(name.size(), 1) == " ")
            return line.substr(name.size() + 1);
    }
    throw std::runtime_error("a setting is missing: " + std::string(name));
}

void runScript(IDispatch* object, const std::string& script) {
    com::ComPtr<IPreprocessor> preprocessor;
    com::check(object->QueryInterface(IID_PPV_ARGS(&preprocessor)));
    VARIANT_BOOL ran = VARIANT_FALSE;
    EXPECT_EQ(preprocessor->PreprocessAndRun(com::Bstr(script).get(), &ran), S_OK);
}

TEST(Pictures, OfEveryWindow) {
    SetProcessDPIAware();
    const char* folder = std::getenv("KEL_PICTURES_FOLDER");
    ASSERT_NE(folder, nullptr);
    for (const Case& row : readCases(KEL_PICTURES)) {
        const Step& window = row.steps.at(0);
        SCOPED_TRACE(setting(window, "file"));
        CLSID identifier{};
        const std::wstring className = com::widen(setting(window, "class"));
        ASSERT_EQ(CLSIDFromProgID((L"KelUtils." + className).c_str(), &identifier), S_OK);
        const auto object = kelUtils().create<IDispatch>(identifier);
        const std::wstring path = com::widen(folder + ("\\" + setting(window, "file")) + ".png");
        std::atomic<bool> done = false;
        const DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(com::widen(setting(window, "caption")));
            savePicture(driver.window(), path);
            PostMessageW(driver.window(), WM_COMMAND, IDCANCEL, 0);
            done = true;
        });
        for (const std::string& line : window.lines) {
            if (line == "script") {
                runScript(object.Get(), setting(window, line));
            } else {
                call(object.Get(), line);
            }
        }
        pumpUntil(done);
    }
}

}  // namespace
}  // namespace kel::test
