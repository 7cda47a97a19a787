// Opens every window of the library, takes its picture, and looks it over at this resolution.
#include <gtest/gtest.h>

#include <cstdlib>

#include "com/text.h"
#include "tests/wine/support/dialog_faults.h"
#include "tests/wine/support/picture.h"
#include "tests/wine/support/scene.h"

namespace kel::test {
namespace {

TEST(Pictures, OfEveryWindow) {
    SetProcessDPIAware();
    const char* folder = std::getenv("KEL_PICTURES_FOLDER");
    ASSERT_NE(folder, nullptr);
    for (const Scene& opening : readOpenings()) {
        SCOPED_TRACE(opening.name);
        const std::wstring path = com::widen(std::string(folder) + "\\" + opening.name + ".png");
        play(opening, [&](HWND window) {
            savePicture(window, path);
            EXPECT_EQ(faultsOf(window), std::vector<std::string>());
        });
    }
}

}  // namespace
}  // namespace kel::test
