#include "tests/wine/support/scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <ostream>
#include <utility>

#include "com/message_loop.h"
#include "tests/wine/support/stage.h"
#include "tests/wine/support/user.h"

namespace kel::test {
namespace {

// The host's lines of one step, and the steps of the user beside them.
using Act = std::vector<const Step*>;

std::vector<Act> actsOf(const Case& scene) {
    std::vector<Act> acts;
    for (const Step& step : scene.steps) {
        if (acts.empty() || !step.lines.empty()) acts.emplace_back();
        acts.back().push_back(&step);
    }
    return acts;
}

void perform(const Act& act, Stage& stage) {
    const bool hasUser = !act.front()->settings.empty() || act.size() > 1;
    stage.isThrough = false;
    std::optional<DialogDriver> driver;
    // A thread that has not asked for messages for long counts as hung.
    com::runWaitingMessages();
    if (hasUser) driver.emplace([&](DialogDriver& user) { User(user, stage).play(act); });
    for (const std::string& line : act.front()->lines) {
        try {
            stage.play(line);
        } catch (const std::exception& failure) {
            if (!stage.mayFail()) ADD_FAILURE() << "'" << line << "': " << failure.what();
        }
    }
    stage.isThrough = true;
    if (driver) driver->runMessageLoop();
}

// Gives the number of calls, and what was recalled.
std::pair<long, std::string> perform(const Scene& scene, long failing,
                                     const std::function<void(HWND)>& look = {}) {
    Stage stage(failing);
    stage.look = look;
    const long before = stage.link.callCount();
    std::size_t index = 0;
    for (const Act& act : actsOf(scene.lines)) {
        if (index > 0) stage.transcript.nextStep();
        perform(act, stage);
        for (const Step* step : act) {
            const std::string told = stage.transcript.step(index++);
            if (failing != 0) continue;
            EXPECT_EQ(told, step->expected)
                << "the step in line " << step->line << " of " << scene.file;
        }
        if (testing::Test::HasFailure()) break;
    }
    return {stage.link.callCount() - before, stage.recalled};
}

}  // namespace

void PrintTo(const Scene& scene, std::ostream* stream) {
    *stream << scene.name;
}

std::vector<Scene> readScenes(const std::string& file) {
    const std::string stem = std::filesystem::path(file).stem().string();
    std::vector<Scene> scenes;
    for (const Case& lines : readCases(file.c_str())) {
        std::string name = stem + std::to_string(lines.steps.front().line);
        for (std::string line : lines.steps.front().settings)
            if (takeWord(line) == "picture") name = line;
        scenes.push_back({name, file, lines});
    }
    return scenes;
}

std::vector<Scene> readOpenings() {
    return readScenes("tests/wine/support/openings.txt");
}

void playOrNot(const Scene& scene) {
    perform(scene, Stage::kAnything);
}

void play(const Scene& scene, const std::function<void(HWND)>& look) {
    const auto [calls, recalled] = perform(scene, 0, look);
    const bool fails = std::ranges::any_of(scene.lines.steps, [](const Step& step) {
        return std::ranges::count(step.lines, "every call fails") > 0;
    });
    if (!fails) return;
    EXPECT_GT(calls, 0);
    for (long failing = 1; failing <= calls && !testing::Test::HasFailure(); ++failing) {
        SCOPED_TRACE("call " + std::to_string(failing) + " fails");
        EXPECT_EQ(perform(scene, failing).second, recalled);
    }
}

}  // namespace kel::test
