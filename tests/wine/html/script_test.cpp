// The table of objects and the script host, as host programs and their scripts use them.
#include <gtest/gtest.h>

#include "com/late_bound.h"
#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/temporary_folder.h"

namespace kel::test {
namespace {

com::ComPtr<IKelObjects> makeTable() {
    return kelUtils().create<IKelObjects>(CLSID_KelObjects);
}

// An object that tells itself from others: a table with so many entries.
com::ComPtr<IDispatch> objectWith(int count) {
    const auto table = makeTable();
    for (int i = 0; i < count; ++i)
        table->put_Item(com::Bstr(std::to_wstring(i)).get(), makeTable().Get());
    return table;
}

class ScriptTest : public testing::Test {
protected:
    ScriptTest() {
        com::ComPtr<IKelScript> own;
        com::check(script_.As(&own));
        com::ComPtr<IDispatch> control;
        com::check(own->get_ScriptControl(&control));
        control_.emplace(control);
    }

    void put(const wchar_t* name, IDispatch* object) {
        EXPECT_EQ(objects_->put_Item(com::Bstr(std::wstring_view(name)).get(), object), S_OK);
    }
    // What an expression of a script gives, or how it fails.
    std::string eval(const wchar_t* expression) {
        try {
            return control_->call(L"Eval", {com::Variant(std::wstring_view(expression))}).toText();
        } catch (const com::Error&) {
            return "fails";
        }
    }
    std::wstring file(const std::string& bytes) const { return folder_.file(L"script.js", bytes); }
    // 0 or 1 for what it answers, -1 when it fails.
    int load(const std::wstring& path) {
        VARIANT_BOOL result = 7;
        if (script_->LoadFile(com::Bstr(std::wstring_view(path)).get(), &result) != S_OK) return -1;
        return result == VARIANT_TRUE ? 1 : 0;
    }
    std::wstring lastError() {
        com::Bstr text;
        script_->get_LastError(text.put());
        return std::wstring(text.view());
    }
    // "line:column description" of the last error.
    std::string lastErrorParts() {
        long line = -1;
        long column = -1;
        com::Bstr description;
        EXPECT_EQ(script_->get_LastErrorLine(&line), S_OK);
        EXPECT_EQ(script_->get_LastErrorColumn(&column), S_OK);
        EXPECT_EQ(script_->get_LastErrorDescription(description.put()), S_OK);
        return std::to_string(line) + ":" + std::to_string(column) + " " +
               com::narrow(description.view());
    }

    const TemporaryFolder folder_;
    com::ComPtr<IKelObjects> objects_ = makeTable();
    com::ComPtr<IKelScriptObject2> script_ = kelUtils().create<IKelScriptObject2>(CLSID_KelScript);
    std::optional<com::LateBound> control_;
};

TEST_F(ScriptTest, TheTableFindsItsObjects) {
    const auto one = objectWith(1);
    const auto two = objectWith(2);
    put(L"Gauge", one.Get());
    put(L"Log", two.Get());
    put(L"GAUGE", two.Get());
    put(L"nothing", nullptr);
    put(L"log", nullptr);
    put(L"Buoy", one.Get());
    const struct {
        com::Variant index;
        const IDispatch* object;
    } rows[] = {{com::Variant(0L), two.Get()},
                {com::Variant(1L), one.Get()},
                {com::Variant(1L).convertedTo(VT_UI1), one.Get()},
                {com::Variant(1L).convertedTo(VT_R8), one.Get()},
                {com::Variant(std::string_view("gauge")), two.Get()},
                {com::Variant(2L), nullptr},
                {com::Variant(-1L), nullptr},
                {com::Variant(std::string_view("Log")), nullptr},
                {com::Variant(std::string_view("")), nullptr}};
    for (const auto& row : rows) {
        com::ComPtr<IDispatch> found;
        EXPECT_EQ(objects_->get_At(row.index.get(), &found), row.object ? S_OK : DISP_E_BADINDEX)
            << row.index.toText();
        EXPECT_EQ(found.Get(), row.object) << row.index.toText();
    }
}

TEST_F(ScriptTest, ScriptsReachTheTableAsItIsNow) {
    put(L"gauge", objectWith(2).Get());
    script_->put_Objects(objects_.Get());
    EXPECT_EQ(eval(L"gauge.Count"), "2");
    put(L"later", objectWith(3).Get());
    EXPECT_EQ(eval(L"later.Count"), "3");
    put(L"gauge", objectWith(1).Get());
    EXPECT_EQ(eval(L"gauge.Count"), "1");
    put(L"later", nullptr);
    EXPECT_EQ(eval(L"later.Count"), "fails");
    // As an argument it is what it stands for.
    put(L"host", kelUtils().create<IKelScriptObject2>(CLSID_KelScript).Get());
    EXPECT_EQ(eval(L"host.Objects = gauge; host.Objects.Count"), "1");
    EXPECT_EQ(eval(L"new ActiveXObject('Scripting.Dictionary').Count"), "0");

    const auto other = makeTable();
    other->put_Item(com::Bstr(L"gauge").get(), objectWith(5).Get());
    script_->put_Objects(other.Get());
    EXPECT_EQ(eval(L"gauge.Count"), "5");
    EXPECT_EQ(eval(L"host.LastError"), "fails");
    script_->put_Objects(nullptr);
    EXPECT_EQ(eval(L"gauge.Count"), "fails");
    EXPECT_EQ(eval(L"1 + 1"), "2");
}

TEST_F(ScriptTest, LoadsFilesOfEveryEncoding) {
    const std::string code = "function name() { return '";
    for (const std::string& bytes :
         {code + "\xC3\xBC'; }", "\xEF\xBB\xBF" + code + "\xC3\xBC'; }", code + "\xFC'; }"}) {
        EXPECT_EQ(load(file(bytes)), 1);
        EXPECT_EQ(eval(L"name().charCodeAt(0)"), "252");
    }
    std::string wide = "\xFF\xFE";
    for (const char character : code + "x'; }")
        wide += std::string{character, '\0'};
    EXPECT_EQ(load(file(wide)), 1);
    EXPECT_EQ(eval(L"name()"), "x");
    EXPECT_EQ(load(folder_.path()), 0);
    EXPECT_EQ(load(folder_.path() + L"\\none.js"), 0);
    EXPECT_EQ(load(L""), 0);
    EXPECT_EQ(lastError(), L"");
    VARIANT_BOOL result = 7;
    EXPECT_EQ(script_->LoadFile(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(script_->LoadFile(nullptr, &result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
}

TEST_F(ScriptTest, TellsAnErrorOnce) {
    // Its window has gone.
    const HWND owner = CreateWindowW(L"STATIC", L"", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, {});
    control_->put(L"SitehWnd", com::Variant(HandleToLong(owner)));
    DestroyWindow(owner);
    std::wstring shown;
    DialogDriver user([&](DialogDriver& driver) {
        driver.waitFor(L"Script Error");
        for (HWND part = GetWindow(driver.window(), GW_CHILD); part;
             part = GetWindow(part, GW_HWNDNEXT)) {
            wchar_t text[400] = L"";
            driver.send(part, WM_GETTEXT, 400, reinterpret_cast<LPARAM>(text));
            if (std::wstring_view(text).starts_with(L"Error #")) shown = text;
        }
        driver.press(IDOK);
    });
    EXPECT_EQ(load(file("var a = 1;\nvar b = ;\n")), 0);
    user.runMessageLoop();
    EXPECT_EQ(shown, lastError());
    EXPECT_NE(shown.find(L"Syntax error, "), std::wstring::npos) << com::narrow(shown);
    EXPECT_NE(shown.find(L", Line: 2, Column: "), std::wstring::npos) << com::narrow(shown);
    const com::LateBound error(com::ComPtr<IDispatch>(control_->get(L"Error").get().pdispVal));
    EXPECT_EQ(error.get(L"Number").toText(), "0");
    EXPECT_EQ(lastErrorParts(), "2:9 Syntax error");
    EXPECT_EQ(load(file("var c = 1;")), 1);
    EXPECT_EQ(lastError(), L"");
}

TEST_F(ScriptTest, FailsUnattendedWithTheError) {
    script_->put_Unattended(VARIANT_TRUE);
    EXPECT_EQ(load(file("noSuchFunction();")), -1);
    const auto told = takeError();
    ASSERT_TRUE(told);
    EXPECT_EQ(told->description, lastError());
    EXPECT_EQ(told->description.find(L"Error #"), 0u) << com::narrow(told->description);
    EXPECT_TRUE(told->description.ends_with(L")"));
    // One of a call of the host's own on the control takes its place.
    EXPECT_EQ(eval(L"  throw new Error('no tide')"), "fails");
    EXPECT_EQ(lastErrorParts(), "1:3 no tide");
    EXPECT_EQ(script_->ClearLastError(), S_OK);
    EXPECT_EQ(lastErrorParts() + com::narrow(lastError()), "0:0 ");
}

}  // namespace
}  // namespace kel::test
