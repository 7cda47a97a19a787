// Plays members.txt and vbscript.txt with the script host of the platform on the registered
// components, and looks that no member is left out.
#include <fstream>
#include <iomanip>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tests/support/table.h"
#include "tests/support/temporary_file.h"
#include "tests/wine/automation/script_host.h"
#include "tests/wine/support/registry_sandbox.h"
#include "tests/wine/support/type_library.h"

namespace kel::test {
namespace {

// One test of a member: what a script evaluates on an object, and what that gives.
struct MemberLine {
    std::string member;
    std::string expression;
    std::string expected;
    std::string window;  // that is awaited
};

// The tests of all members of a class, or of an interface of an object that others give out.
struct Section {
    std::string type;
    std::string maker;
    std::vector<MemberLine> lines;
};

void PrintTo(const Section& section, std::ostream* stream) {
    *stream << section.type;
}

std::vector<Section> readSections() {
    std::vector<Section> sections;
    std::ifstream file(projectFile("tests/wine/automation/members.txt"));
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        if (line[0] != ' ') {
            const std::size_t equals = line.find(" = ");
            sections.push_back({line.substr(0, equals), line.substr(equals + 3), {}});
            continue;
        }
        static const std::regex bar(" \\| ");
        std::vector<std::string> parts(
            std::sregex_token_iterator(line.begin() + 2, line.end(), bar, -1), {});
        parts.resize(4);
        sections.back().lines.push_back({parts[0], parts[1], parts[2], parts[3]});
    }
    return sections;
}

class Members : public testing::TestWithParam<Section> {};

TEST_P(Members, DoWhatTheTableTells) {
    std::ostringstream script;
    script << TemporaryFile::bytesOf(projectFile("tests/wine/automation/members.js"))
           << "var maker = " << std::quoted(GetParam().maker) << ";\n";
    std::deque<std::string> windows;
    for (const MemberLine& line : GetParam().lines) {
        script << "play(" << std::quoted(line.expression) << ");\n";
        if (!line.window.empty()) windows.push_back(line.window);
    }
    std::istringstream printed(runScriptHost(script.str(), L".js", windows));
    for (const MemberLine& line : GetParam().lines) {
        std::string result = "(not reached)";
        std::getline(printed, result);
        EXPECT_EQ(result, line.expected) << line.member << " | " << line.expression;
    }
}

INSTANTIATE_TEST_SUITE_P(Automation, Members, testing::ValuesIn(readSections()),
                         testing::PrintToStringParamName());

std::string tableLine(const std::string& section, const std::string& member) {
    return section + ": " + member;
}

// What the type library offers to scripts: the members of all classes that clients create, and of
// the objects that only those members give out.
class Offered {
public:
    Offered() {
        for (const auto& type : libraryTypes()) {
            types_[nameOf(type.Get())] = type;
            const TYPEATTR attributes = attributesOf(type.Get());
            if (!(attributes.wTypeFlags & TYPEFLAG_FCANCREATE)) continue;
            for (UINT i = 0; i < attributes.cImplTypes; ++i) {
                INT flags = 0;
                com::check(type->GetImplTypeFlags(i, &flags));
                const auto each = implemented(type.Get(), i);
                if (isScripted(each.Get()) && !(flags & IMPLTYPEFLAG_FSOURCE))
                    add(each, nameOf(type.Get()));
            }
        }
        for (std::set<std::string> added; added != given_;) {
            added = given_;
            for (const std::string& name : added)
                if (!taken_.contains(name)) add(types_[name], name);
        }
    }

    std::set<std::string> members;

private:
    static bool isScripted(ITypeInfo* type) {
        return attributesOf(type).typekind == TKIND_DISPATCH;
    }

    void add(const com::ComPtr<ITypeInfo>& type, const std::string& section) {
        forEachMember(type, [&](ITypeInfo* declaredBy, const FUNCDESC& function) {
            // Script languages do not tell the two ways to put an object apart.
            const auto kind =
                function.invkind == INVOKE_PROPERTYPUTREF ? INVOKE_PROPERTYPUT : function.invkind;
            members.insert(tableLine(section, kindOf(kind) + nameOf(declaredBy, function.memid)));
            for (SHORT i = 0; i < function.cParams; ++i) {
                const ELEMDESC& parameter = function.lprgelemdescParam[i];
                const auto passed = namedType(declaredBy, parameter.tdesc);
                if (passed && isScripted(passed.Get()) && types_.contains(nameOf(passed.Get())))
                    (isResult(parameter) ? given_ : taken_).insert(nameOf(passed.Get()));
            }
        });
    }

    std::map<std::string, com::ComPtr<ITypeInfo>> types_;
    std::set<std::string> given_, taken_;  // interfaces of objects that come from members, go there
};

TEST(AutomationTable, HasEveryMemberOfTheTypeLibrary) {
    std::set<std::string> tested;
    for (const Section& section : readSections())
        for (const MemberLine& line : section.lines)
            tested.insert(tableLine(section.type, line.member));
    EXPECT_EQ(joined(tested), joined(Offered().members));
}

class VbScript : public testing::TestWithParam<Case> {};

TEST_P(VbScript, PrintsWhatIsExpected) {
    const Step& step = GetParam().steps.at(0);
    EXPECT_EQ(runScriptHost(step.text(), L".vbs", {step.settings.begin(), step.settings.end()}),
              step.expected);
}

INSTANTIATE_TEST_SUITE_P(Automation, VbScript,
                         testing::ValuesIn(readCases("tests/wine/automation/vbscript.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::test
