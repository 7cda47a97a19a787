#include "tests/wine/support/openings.h"

#include <gtest/gtest.h>

#include <ostream>

#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "tests/support/cases.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/late_bound.h"
#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

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

}  // namespace

std::vector<Opening> readOpenings() {
    std::vector<Opening> openings;
    for (const Case& row : readCases(KEL_OPENINGS)) {
        const Step& step = row.steps.at(0);
        Opening opening{setting(step, "file"), L"KelUtils." + com::widen(setting(step, "class")),
                        com::widen(setting(step, "caption")), step.lines, setting(step, "script")};
        if (!opening.script.empty()) opening.calls.clear();
        openings.push_back(opening);
    }
    return openings;
}

void PrintTo(const Opening& opening, std::ostream* stream) {
    *stream << opening.name;
}

void open(const Opening& opening, const std::function<void(HWND)>& look) {
    CLSID component{};
    com::check(CLSIDFromProgID(opening.component.c_str(), &component));
    const FakeLink link;
    const auto object = kelUtils().create<IDispatch>(component);
    com::ComPtr<IKelModalDialog> dialog;
    if (SUCCEEDED(object.As(&dialog))) com::check(dialog->put_Communicator(link.communicator()));
    DialogDriver user([&](DialogDriver& driver) {
        driver.waitFor(opening.caption);
        look(driver.window());
        PostMessageW(driver.window(), WM_COMMAND, IDCANCEL, 0);
    });
    for (const std::string& line : opening.calls)
        EXPECT_EQ(call(object.Get(), line), line.starts_with("ShowModal") ? "False" : "") << line;
    if (!opening.script.empty()) runScript(object.Get(), opening.script);
    user.runMessageLoop();
}

}  // namespace kel::test
