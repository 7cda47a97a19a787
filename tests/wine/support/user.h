#pragma once
// The user of a scene.

#include <functional>
#include <string>
#include <vector>

#include "tests/support/cases.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/stage.h"

namespace kel::test {

// The control that a name in a scene stands for: a number, the platform's name without "ID", or one
// of resource_ids.h without "IDC_" or "IDM_". Throws where there is none.
int identifierOf(const std::string& name);

// Whether a text is as a pattern says, in which "*" stands for any text.
bool fits(std::string_view text, std::string_view pattern);

// What a control shows: its text, or its rows, or the place of its bar; whether it is checked,
// disabled or hidden. From any thread.
std::string described(HWND window);

// Lives on the driver's thread.
class User {
public:
    User(DialogDriver& driver, Stage& stage) : driver_(driver), stage_(stage) {}

    // The lines of one step after the other. Throws when one is not understood, or waits in vain;
    // where a call was to fail and has failed, a user who waits in vain gives up that line only,
    // and cancels what is left in the end.
    void play(const std::vector<const Step*>& steps);

private:
    void act(const std::string& line);
    void wait(const std::string& what, const std::function<bool()>& holds);
    void press(const std::string& name);
    void key(std::string name);
    void choose(std::string line);
    void click(std::string line, const std::vector<UINT>& messages, WPARAM keys);
    void tellEach(const std::string& names, std::string (*toldOf)(HWND));
    void answerBox(const std::wstring& caption);

    HWND control(const std::string& name);

    DialogDriver& driver_;
    Stage& stage_;
    bool leaves_ = false;
};

}  // namespace kel::test
