#include <gtest/gtest.h>

#include <algorithm>
#include <unordered_map>

#include "com/text.h"
#include "hosts/shared/library_contents.h"
#include "hosts/shared/registration_source.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/server/expected.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"

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

Values valuesOf(const std::set<std::string>& listing) {
    Values values;
    for (const std::string& line : listing) {
        const std::size_t equals = line.find(" = \"");
        values[line.substr(0, equals)] =
            equals == std::string::npos ? "" : line.substr(equals + 4, line.size() - equals - 5);
    }
    return values;
}

class DiagnosisOfTheRegistration : public testing::Test {
protected:
    DiagnosisOfTheRegistration() {
        for (const wchar_t* name : {L"CLSID", L"Interface", L"TypeLib"}) {
            com::RegistryKeyHandle key;
            EXPECT_EQ(RegCreateKeyW(classes_.key(), name, key.put()), ERROR_SUCCESS);
        }
        EXPECT_EQ(exportOf<HRESULT WINAPI()>(kelUtils().module(), "DllRegisterServer")(), S_OK);
        values_ = valuesOf(classes_.listing());
        source_.user = readerOf(user_);
        source_.machine = readerOf(values_);
        source_.file = [](const std::string&) { return host::ImageFile{true, 32, ""}; };
        source_.manifest = [](const std::string&) { return std::nullopt; };
    }

    RegistrationReport check() const { return checkLibrary(host::kelUtilsLibrary(), source_); }

    static std::string faultsOf(const RegistrationReport& report) {
        std::string text;
        for (const std::string& fault : report.faults)
            text += fault + "\n";
        return text;
    }
    std::string faults() const { return faultsOf(check()); }

    RegistrySandbox classes_{HKEY_CLASSES_ROOT};
    Values user_;
    Values values_;
    host::RegistrationSource source_;
};

TEST_F(DiagnosisOfTheRegistration, FindsNothingWrongWithARegistration) {
    source_ = host::registrationSource();
    source_.user = readerOf(user_);
    source_.machine = host::readerOf(classes_.key());
    RegistrationReport report = check();
    EXPECT_EQ(faults(), "");
    EXPECT_EQ(report.place, host::Place::kMachine);
    EXPECT_EQ(report.file, com::narrow(kelUtils().path()));
    EXPECT_EQ(report.image.bits, 32);
    EXPECT_EQ(source_.file("ole32.dll").bits, 32);
    const std::string path(2000, 'x');
    RegSetKeyValueA(classes_.key(), "Long", "", REG_SZ, path.c_str(), path.size() + 1);
    EXPECT_EQ(host::readerOf(classes_.key())("Long", ""), path);
    EXPECT_EQ(report.contents, "18 classes, 55 interfaces, type library 1.0");
    EXPECT_TRUE(report.notes.empty());
    std::swap(source_.user, source_.machine);
    EXPECT_EQ(check().place, host::Place::kUser);
}

TEST_F(DiagnosisOfTheRegistration, NamesEachKeyThatIsGoneOrWrong) {
    const Values whole = values_;
    std::size_t count = 0;
    for (const auto& [place, value] : whole) {
        // The roots are everybody's; the marshaller for 16 bits means nothing any more.
        if (place.find('\\') == std::string::npos && !place.starts_with("KelUtils.")) continue;
        if (place.ends_with("\\ProxyStubClsid")) continue;
        SCOPED_TRACE(place);
        Values taken;
        std::erase_if(values_, [&](const auto& other) {
            const bool isBelow = other.first == place || other.first.starts_with(place + "\\") ||
                                 other.first.starts_with(place + " : ");
            if (isBelow) taken.insert(other);
            return isBelow;
        });
        const RegistrationReport report = check();
        const std::string gone = faultsOf(report);
        EXPECT_NE(gone.find(place), std::string::npos) << gone;
        EXPECT_FALSE(report.remedies.empty());
        values_.merge(taken);
        if (value.empty()) continue;
        values_[place] = "wrong";
        const std::string wrong = faults();
        EXPECT_NE(wrong.find(place + " is 'wrong'"), std::string::npos) << wrong;
        EXPECT_EQ(std::ranges::count(wrong, '\n'), 1) << wrong;
        values_[place] = value;
        ++count;
    }
    EXPECT_GT(count, 400u);
    EXPECT_EQ(faults(), "");
}

TEST_F(DiagnosisOfTheRegistration, TellsWhatElseCanBeWrong) {
    const auto whole = source_;
    const std::string path = com::narrow(kelUtils().path());
    const auto with = [&](host::ImageFile file) {
        source_.file = [file](const std::string&) { return file; };
        const std::string text = faults();
        source_ = whole;
        return text;
    };
    EXPECT_EQ(with({}), "there is no file " + path + "\n");
    EXPECT_EQ(with({true, 64, ""}), path + " is a 64-bit library\n");
    EXPECT_EQ(with({true, 0, ""}), path + " is no library\n");

    source_.manifest = [](const std::string& identifier) -> std::optional<std::string> {
        if (identifier == toText(CLSID_Preprocessor)) return std::nullopt;
        return "C:\\bare\\KelUtils.manifest";
    };
    source_.file = [](const std::string&) { return host::ImageFile(); };
    EXPECT_EQ(faults(),
              "C:\\bare\\KelUtils.manifest does not name Preprocessor\n"
              "there is no file C:\\bare\\KelUtils.dll\n");
    source_ = whole;

    std::erase_if(values_,
                  [](const auto& value) { return value.first.starts_with("Interface\\"); });
    EXPECT_EQ(faults(),
              "55 interfaces of 55 are not registered: calls from thread to thread fail\n");
    values_.clear();
    EXPECT_EQ(faults(), "not one of its classes is registered\n");
}

// What is no fault, and yet worth knowing.
TEST_F(DiagnosisOfTheRegistration, NotesWhatOthersHaveRegistered) {
    const std::string interfaceKey = "Interface\\" + toText(__uuidof(IKelStream));
    values_[interfaceKey + "\\TypeLib"] = "{other}";
    values_[interfaceKey + "\\TypeLib : Version"] = "2.0";
    EXPECT_NE(faults(), "");
    values_["TypeLib\\{other}"] = "";
    EXPECT_EQ(faults(), "");
    ASSERT_EQ(check().notes.size(), 1u);
    EXPECT_TRUE(check().notes[0].starts_with("1 interface is registered by another library"));

    user_ = values_;
    values_["CLSID\\" + toText(CLSID_Preprocessor) + "\\InprocServer32"] = "C:\\old.dll";
    EXPECT_EQ(faults(), "");
    ASSERT_EQ(check().notes.size(), 2u);
    EXPECT_EQ(check().notes[0], "programs that run as an administrator use C:\\old.dll");
}

TEST(DiagnosisOfALink, NamesWhatIsMissing) {
    Values values;
    host::RegistrationSource source;
    source.user = [](const auto&, const auto&) { return std::nullopt; };
    source.machine = readerOf(values);
    source.file = [](const std::string& path) {
        return host::ImageFile{path != "gone", path == "wide" ? 64 : path == "text" ? 0 : 32, ""};
    };
    const host::LinkPart parts[] = {{"needed", "{1}", nullptr}, {"wanted", "{2}", "some dialog"}};
    const auto check = [&] {
        const RegistrationReport report = checkLink("A.Link", parts, source);
        std::string text = report.contents + "|";
        for (const std::string& note : report.notes)
            text += note + "|";
        for (const std::string& fault : report.faults)
            text += fault + "|";
        return text;
    };
    EXPECT_EQ(check(), "|A.Link is not registered|");
    values["A.Link\\CLSID"] = "{0}";
    EXPECT_EQ(check(),
              "needed|it has no wanted: no some dialog|"
              "A.Link: CLSID\\{0}\\InprocServer32 is missing|"
              "needed: CLSID\\{1}\\InprocServer32 is missing|");
    const auto put = [&](const char* identifier, const char* path) {
        values[std::string("CLSID\\") + identifier + "\\InprocServer32"] = path;
    };
    put("{0}", "\"link.dll\"");
    put("{1}", "LINK.dll");
    put("{2}", "wide");
    EXPECT_EQ(check(), "needed, wanted|wanted: wide is a 64-bit library|");
    put("{1}", "gone");
    put("{2}", "text");
    EXPECT_EQ(check(), "needed, wanted|needed: there is no file gone|wanted: text is no library|");
}

}  // namespace
}  // namespace kel::test
