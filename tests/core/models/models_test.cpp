// Plays the cases of the files in this folder.
#include <gtest/gtest.h>

#include <filesystem>
#include <iomanip>
#include <map>
#include <stdexcept>

#include "hosts/shared/model/failure.h"
#include "tests/core/models/subject.h"
#include "tests/support/cases.h"
#include "tests/support/project_file.h"

namespace kel::test {
namespace {

std::map<std::string, std::function<Player()>>& subjects() {
    static std::map<std::string, std::function<Player()>> all;
    return all;
}

// A refusal shows its reason, and the exit code that goes with it.
std::string resultOf(const std::function<std::string()>& play) {
    try {
        return play();
    } catch (const host::Failure& failure) {
        return shown(failure.code(), failure.what());
    } catch (const std::exception& error) {
        return error.what();
    }
}

TEST(Models, DecideAsTheTablesSay) {
    std::map<std::string, int> played;
    const std::filesystem::path folder = "tests/core/models";
    for (const auto& file : std::filesystem::directory_iterator(projectFile(folder))) {
        if (file.path().extension() != ".txt") continue;
        for (const Case& rows : readCases((folder / file.path().filename()).generic_string())) {
            const std::string& name = rows.steps[0].settings.at(0);
            const Player player = subjects().at(name)();
            ++played[name];
            for (const Step& step : rows.steps) {
                SCOPED_TRACE(name + ", line " + std::to_string(step.line));
                std::string shown;
                for (const std::string& line : step.lines) {
                    Words words(line);
                    const std::string result = resultOf([&] { return player(words); });
                    shown += (result.empty() ? "nothing" : escaped(result)) + "\n";
                }
                EXPECT_EQ(shown, step.expected);
            }
        }
    }
    for (const auto& [name, make] : subjects())
        EXPECT_GT(played[name], 0) << name << " stands in no file";
}

// Paths convert between Unicode's forms, whatever the locale.
using Units = std::conditional_t<sizeof(wchar_t) == 2, std::u16string, std::u32string>;

}  // namespace

std::wstring wide(const std::string& text) {
    const std::filesystem::path path(std::u8string(text.begin(), text.end()));
    const auto units = path.string<Units::value_type>();
    return {units.begin(), units.end()};
}

std::string narrow(std::wstring_view text) {
    const auto bytes = std::filesystem::path(Units(text.begin(), text.end())).u8string();
    return {bytes.begin(), bytes.end()};
}

std::string Words::text() {
    std::string word;
    if (!(line_ >> std::quoted(word, '"', '\0')))
        throw std::invalid_argument("a word is missing: " + line_.str());
    return word;
}

std::vector<std::string> Words::all() {
    std::vector<std::string> words;
    for (std::string word; line_ >> std::quoted(word, '"', '\0');)
        words.push_back(word);
    return words;
}

std::string Words::rest() {
    if (line_.peek() == ' ') line_.get();
    return {std::istreambuf_iterator<char>(line_), {}};
}

std::vector<Words> Words::parts() {
    std::vector<Words> parts;
    for (std::string part; std::getline(line_, part, ';');)
        parts.emplace_back(part);
    return parts;
}

std::string ofEachBeginning(const std::string& text,
                            const std::function<std::string(const std::string&)>& play) {
    std::vector<std::pair<std::size_t, std::string>> runs;
    for (std::size_t size = 0; size <= text.size(); ++size) {
        const std::string result = resultOf([&] { return play(text.substr(0, size)); });
        if (runs.empty() || runs.back().second != result) runs.emplace_back(0, result);
        ++runs.back().first;
    }
    std::string all;
    for (const auto& [count, result] : runs)
        all += std::to_string(count) + "x " + result + "; ";
    return all;
}

Subject::Subject(const char* name, std::function<Player()> make) {
    if (!subjects().emplace(name, std::move(make)).second) throw std::invalid_argument(name);
}

}  // namespace kel::test
