// What --diagnose finds in a registration; diagnosis.txt tells how the cases are written.
#include <algorithm>
#include <unordered_map>

#include "com/text.h"
#include "hosts/shared/library_contents.h"
#include "hosts/shared/registration_source.h"
#include "tests/support/table.h"
#include "tests/wine/server/machine_classes.h"

namespace kel::test {
namespace {

using host::RegistrationReport;

// Values of the registry by "key", or "key : name".
using Values = std::unordered_map<std::string, std::string>;

host::ReadValue readerOf(const Values& values) {
    return [&values](const std::string& key, const std::string& name) {
        const auto found = values.find(name.empty() ? key : key + " : " + name);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    };
}

// Takes out what begins so.
void take(Values& values, const std::string& start) {
    std::erase_if(values, [&](const auto& each) { return each.first.starts_with(start); });
}

class Diagnosis : public MachineClasses, public testing::WithParamInterface<Case> {
protected:
    Diagnosis() {
        EXPECT_EQ(registerServer(), S_OK);
        for (const std::string& line : classes_.listing()) {
            const std::size_t equals = line.find(" = \"");
            values_[line.substr(0, equals)] =
                equals == line.npos ? "" : line.substr(equals + 4, line.size() - equals - 5);
        }
        source_.user = readerOf(user_);
        source_.machine = readerOf(values_);
        source_.file = [this](const std::string& path) {
            const auto known = files_.find(path);
            if (known == files_.end()) return host::ImageFile{true, 32, ""};
            return host::ImageFile{known->second != "none", std::atoi(known->second.c_str()), ""};
        };
        source_.manifest = [this](const std::string& identifier) {
            return manifest_.empty() || identifier == unnamed_ ? std::nullopt
                                                               : std::optional(manifest_);
        };
    }

    RegistrationReport check() const { return checkLibrary(host::kelUtilsLibrary(), source_); }

    // Does a line, or gives what a check tells.
    std::string play(std::string line) {
        const std::string word = takeWord(line);
        const std::size_t equals = line.find(" = ");
        const std::string rest = equals == line.npos ? "" : line.substr(equals + 3);
        line.erase(std::min(equals, line.size()));
        if (line == "$module") line = module_;
        if (word == "put") return values_[line] = rest, "";
        if (word == "take") return take(values_, line), "";
        if (word == "user") return user_ = values_, "";
        if (word == "file") return files_[line] = rest, "";
        if (word == "manifest") return manifest_ = line, unnamed_ = rest, "";
        return told(word == "library" ? check() : checkLink("A.Link", parts_, source_));
    }

    std::string told(const RegistrationReport& report) const {
        std::string text = report.contents.empty() ? "" : report.contents + "\n";
        for (const std::string& note : report.notes)
            text += "note: " + note + "\n";
        for (const std::string& fault : report.faults)
            text += "wrong: " + fault + "\n";
        for (const std::string& remedy : report.remedies)
            text += "to do: " + remedy + "\n";
        const std::size_t path = text.find(module_);
        return path == text.npos ? text : text.replace(path, module_.size(), "$module");
    }

    const std::string module_ = com::narrow(kelUtils().path());
    const host::LinkPart parts_[2] = {{"needed", "{1}", nullptr}, {"wanted", "{2}", "some dialog"}};
    std::string manifest_, unnamed_;
    Values user_, values_, files_;
    host::RegistrationSource source_;
};

TEST_P(Diagnosis, TellsWhatTheTableTells) {
    playTable(GetParam(), [&](const std::string& line) { return play(line); });
}

INSTANTIATE_TEST_SUITE_P(Of, Diagnosis,
                         testing::ValuesIn(readCases("tests/wine/server/diagnosis.txt")),
                         testing::PrintToStringParamName());

TEST_F(Diagnosis, FindsNothingWrongWithARegistration) {
    source_ = host::registrationSource();
    source_.user = readerOf(user_);
    source_.machine = host::readerOf(classes_.key());
    EXPECT_EQ(told(check()), "18 classes, 55 interfaces, type library 1.0\n");
    EXPECT_EQ(check().place, host::Place::kMachine);
    EXPECT_EQ(check().file, module_);
    EXPECT_EQ(check().image.bits, 32);
    EXPECT_EQ(source_.file("ole32.dll").bits, 32);
    const std::string path(2000, 'x');
    RegSetKeyValueA(classes_.key(), "Long", "", REG_SZ, path.c_str(), path.size() + 1);
    EXPECT_EQ(host::readerOf(classes_.key())("Long", ""), path);
    std::swap(source_.user, source_.machine);
    EXPECT_EQ(check().place, host::Place::kUser);
}

TEST_F(Diagnosis, NamesEachKeyThatIsGoneOrWrong) {
    std::size_t count = 0;
    const Values whole = values_;
    for (const auto& [place, value] : whole) {
        // The roots are everybody's; the marshaller for 16 bits means nothing any more.
        if (place.find('\\') == std::string::npos && !place.starts_with("KelUtils.")) continue;
        if (place.ends_with("\\ProxyStubClsid")) continue;
        SCOPED_TRACE(place);
        take(values_, place + "\\");
        take(values_, place + " : ");
        values_.erase(place);
        const RegistrationReport gone = check();
        EXPECT_NE(told(gone).find(place), std::string::npos) << told(gone);
        EXPECT_FALSE(gone.remedies.empty());
        values_ = whole;
        if (value.empty()) continue;
        values_[place] = "wrong";
        const std::vector<std::string> faults = check().faults;
        ASSERT_EQ(faults.size(), 1u) << told(check());
        EXPECT_NE(faults[0].find(place + " is 'wrong'"), std::string::npos) << faults[0];
        values_ = whole;
        ++count;
    }
    EXPECT_GT(count, 400u);
    EXPECT_TRUE(check().faults.empty());
}

}  // namespace
}  // namespace kel::test
