// Plays members.txt and vbscript.txt with the script host of the platform on the registered
// components, and looks that no member is left out.
#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "tests/support/cases.h"
#include "tests/support/project_file.h"
#include "tests/wine/automation/script_host.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/type_library.h"

namespace kel::test {
namespace {

// One test of a member: what a script evaluates on an object, and what that gives.
struct MemberLine {
    std::string member;
    std::string expression;
    std::string expected;
    std::string window;  // "caption" or "caption: text in it"
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
        std::vector<std::string> parts(1);
        for (std::size_t at = 2, bar; at <= line.size(); at = bar + 3) {
            bar = std::min(line.find(" | ", at), line.size());
            parts.back() = line.substr(at, bar - at);
            if (bar < line.size()) parts.emplace_back();
        }
        parts.resize(4);
        sections.back().lines.push_back({parts[0], parts[1], parts[2], parts[3]});
    }
    return sections;
}

std::string quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char character : text)
        quoted += character == '"' || character == '\\' ? std::string{'\\', character}
                                                        : std::string{character};
    return quoted + "\"";
}

constexpr const char* kPrelude = R"(
var o;
function make(name) { return new ActiveXObject("KelUtils." + name); }
function link() { return new ActiveXObject("BenchLink.Communicator"); }
function file(text, isWide) {
    var files = new ActiveXObject("Scripting.FileSystemObject");
    var path = files.GetSpecialFolder(2) + "\\kel_automation.js";
    var stream = files.CreateTextFile(path, true, isWide == true);
    stream.Write(text);
    stream.Close();
    return path;
}
function table() {
    var made = make("KelObjects");
    for (var i = 0; i < arguments.length; ++i) made.Item(arguments[i]) = make("KelObjects");
    return made;
}
function walk(collection, what) {
    var texts = [];
    for (var each = new Enumerator(collection); !each.atEnd(); each.moveNext())
        texts.push(what(each.item()));
    return texts.join(" ");
}
function show(value) {
    if (value === null) return "nothing";
    return typeof value == "object" ? "an object" : String(value);
}
function play(expression) {
    var shown;
    try { o = eval(maker); shown = show(eval(expression)); }
    catch (error) { shown = "fails: " + error.message; }
    WScript.Echo(shown);
}
)";

class Members : public testing::TestWithParam<Section> {};

TEST_P(Members, DoWhatTheTableTells) {
    std::string script = kPrelude + ("var maker = " + quoted(GetParam().maker) + ";\n");
    std::deque<AwaitedWindow> windows;
    for (const MemberLine& line : GetParam().lines) {
        script += "play(" + quoted(line.expression) + ");\n";
        const std::size_t colon = line.window.find(": ");
        if (!line.window.empty())
            windows.push_back({com::widen(line.window.substr(0, colon)),
                               colon == std::string::npos
                                   ? std::wstring()
                                   : com::widen(line.window.substr(colon + 2))});
    }
    std::istringstream printed(runScriptHost(script, L".js", windows));
    for (const MemberLine& line : GetParam().lines) {
        std::string result = "(not reached)";
        std::getline(printed, result);
        EXPECT_EQ(result, line.expected) << line.member << " | " << line.expression;
    }
}

INSTANTIATE_TEST_SUITE_P(Automation, Members, testing::ValuesIn(readSections()),
                         testing::PrintToStringParamName());

// The interface that a parameter or a result passes, if it is one of the library.
std::string interfaceOf(ITypeInfo* type, const ELEMDESC& parameter) {
    const TYPEDESC* inner = &parameter.tdesc;
    while (inner->vt == VT_PTR)
        inner = inner->lptdesc;
    com::ComPtr<ITypeInfo> target;
    if (inner->vt != VT_USERDEFINED || FAILED(type->GetRefTypeInfo(inner->hreftype, &target)))
        return {};
    return attributesOf(target.Get()).typekind == TKIND_ENUM ? std::string() : nameOf(target.Get());
}

struct Automation {
    std::map<std::string, std::set<std::string>> members;  // by class or interface
    std::set<std::string> given;  // interfaces of objects that come from members
    std::set<std::string> taken;  // interfaces of objects that go to members
};

void addMembers(const com::ComPtr<ITypeInfo>& type, const std::string& section, Automation& all) {
    forEachMember(type, [&](ITypeInfo* declaredBy, const FUNCDESC& function) {
        // Script languages do not tell the two ways to put an object apart.
        const auto kind =
            function.invkind == INVOKE_PROPERTYPUTREF ? INVOKE_PROPERTYPUT : function.invkind;
        all.members[section].insert(kindOf(kind) + nameOf(declaredBy, function.memid));
        for (SHORT i = 0; i < function.cParams; ++i) {
            const ELEMDESC& parameter = function.lprgelemdescParam[i];
            const bool isOut = parameter.paramdesc.wParamFlags & PARAMFLAG_FOUT;
            (isOut ? all.given : all.taken).insert(interfaceOf(declaredBy, parameter));
        }
    });
}

// What the type library offers to scripts: the members of all classes that clients create, and of
// the objects that only those members give out.
std::map<std::string, std::set<std::string>> automationMembers() {
    Automation all;
    std::map<std::string, com::ComPtr<ITypeInfo>> types;
    for (const auto& type : libraryTypes()) {
        types[nameOf(type.Get())] = type;
        const TYPEATTR attributes = attributesOf(type.Get());
        if (!(attributes.wTypeFlags & TYPEFLAG_FCANCREATE)) continue;
        for (UINT i = 0; i < attributes.cImplTypes; ++i) {
            INT flags = 0;
            com::check(type->GetImplTypeFlags(i, &flags));
            const auto each = implemented(type.Get(), i);
            const bool isDispatch = attributesOf(each.Get()).typekind == TKIND_DISPATCH;
            if (isDispatch && !(flags & IMPLTYPEFLAG_FSOURCE))
                addMembers(each, nameOf(type.Get()), all);
        }
    }
    for (bool grows = true; grows;) {
        grows = false;
        for (const std::string& name : std::set(all.given)) {
            if (all.taken.contains(name) || all.members.contains(name) || !types.contains(name))
                continue;
            addMembers(types[name], name, all);
            grows = true;
        }
    }
    return all.members;
}

TEST(AutomationTable, HasEveryMemberOfTheTypeLibrary) {
    std::map<std::string, std::set<std::string>> tested;
    for (const Section& section : readSections())
        for (const MemberLine& line : section.lines)
            tested[section.type].insert(line.member);
    for (const auto& [type, members] : automationMembers())
        for (const std::string& member : members)
            EXPECT_TRUE(tested[type].erase(member)) << type << ": no test of " << member;
    for (const auto& [type, members] : tested)
        for (const std::string& member : members)
            ADD_FAILURE() << type << ": there is no " << member;
}

class VbScript : public testing::TestWithParam<Case> {};

TEST_P(VbScript, PrintsWhatIsExpected) {
    const Step& step = GetParam().steps.at(0);
    std::deque<AwaitedWindow> windows;
    for (const std::string& caption : step.settings)
        windows.push_back({com::widen(caption), L""});
    EXPECT_EQ(runScriptHost(step.text(), L".vbs", windows), step.expected);
}

INSTANTIATE_TEST_SUITE_P(Automation, VbScript,
                         testing::ValuesIn(readCases("tests/wine/automation/vbscript.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::test
