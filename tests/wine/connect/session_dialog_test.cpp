// The new session dialog: its pages, what it remembers, and the same without a window.
#include <gtest/gtest.h>
#include <winsock2.h>

#include <cstdio>
#include <deque>
#include <optional>

#include "com/variant.h"
#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "tests/wine/support/bench_link.h"
#include "tests/wine/support/class_object.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/dialog_faults.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"
#include "tests/wine/support/tcp_peer.h"

namespace kel::test {
namespace {

constexpr wchar_t kSessionCaption[] = L"Open Session";
constexpr char kStore[] = "Software\\Kelvra\\Components\\";

class SessionDialogTest : public testing::Test {
protected:
    SessionDialogTest() {
        link_.hasPort = false;
        for (const wchar_t* name : {L"COM1", L"COM4", L"COM5", L"COM6", L"COM7", L"COM8"})
            ports_.absentPorts[name] = 0;
        dialog_->put_Communicator(link_.communicator());
        dialog_->put_ApplicationName(com::Bstr(L"Test").get());
    }

    void rememberSession(DWORD option, DWORD lastConnection) {
        remember("NewSessionDialog\\App_Test", "Option", option);
        remember("NewSessionDialog\\App_Test", "LastConnection", lastConnection);
    }
    void rememberPeer() {
        remember("KelGateConnect\\Connections", "Count", 1);
        remember("KelGateConnect\\Connections\\0", "Name", "Buoy");
        remember("KelGateConnect\\Connections\\0", "Address", "127.0.0.1");
        remember("KelGateConnect\\Connections\\0", "Port", bench::test::text(peer_.port()));
    }
    // The values of one section, without its path: "Option = dword:000000d3\n".
    std::string remembered(const std::string& section) const {
        const std::string start = kStore + section + " : ";
        std::string values;
        for (const std::string& line : sandbox_.listing()) {
            const std::size_t found = line.find(start);
            if (found != std::string::npos) values += line.substr(found + start.size()) + "\n";
        }
        return values;
    }
    std::string session() const { return remembered("NewSessionDialog\\App_Test"); }

    bool show(const std::function<void(DialogDriver&)>& steps, HRESULT expected = S_OK,
              const wchar_t* caption = kSessionCaption) {
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(caption);
            steps(driver);
        });
        EXPECT_EQ(dialog_->ShowModal(0, &result), expected);
        return result == VARIANT_TRUE;
    }
    // The page that is seen, as the option it stands for; 0 when there is not exactly one.
    static int visiblePage(DialogDriver& driver) {
        constexpr int kSigns[] = {IDC_SERIAL_RATE, IDC_NETWORK_LIST, IDC_FILE_NAME};
        int visible = 0;
        for (int i = 0; i < 3; ++i) {
            if (!IsWindowVisible(inPage(driver, kSigns[i]))) continue;
            visible = visible ? -1 : IDC_SESSION_SERIAL + i;
        }
        return std::max(visible, 0);
    }
    static int checkedOption(DialogDriver& driver) {
        for (int option = IDC_SESSION_SERIAL; option <= IDC_SESSION_FILE; ++option)
            if (driver.send(driver.control(option), BM_GETCHECK) == BST_CHECKED) return option;
        return 0;
    }
    // A control of the one of the pages that has it; of the visible one where several do.
    static HWND inPage(DialogDriver& driver, int identifier) {
        HWND found = nullptr;
        for (HWND page = GetWindow(driver.window(), GW_CHILD); page;
             page = GetWindow(page, GW_HWNDNEXT)) {
            const HWND control = GetDlgItem(page, identifier);
            if (control && (!found || IsWindowVisible(control))) found = control;
        }
        return found;
    }
    static std::wstring textOf(DialogDriver& driver, int identifier) {
        wchar_t text[400] = L"";
        driver.send(inPage(driver, identifier), WM_GETTEXT, 400, reinterpret_cast<LPARAM>(text));
        return text;
    }
    static void press(DialogDriver& driver, int identifier) {
        PostMessageW(inPage(driver, identifier), BM_CLICK, 0, 0);
    }
    static void waitForStatus(DialogDriver& driver, int line, const std::wstring& text) {
        driver.waitUntil("the status line", [&] { return textOf(driver, line) == text; });
    }
    // Connects, or where that fails cancels. The dialog may fail with a code.
    bool connectOverPage(int option, HRESULT allowed) {
        VARIANT_BOOL result = 7;
        const HCURSOR cursor = GetCursor();
        DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(kSessionCaption);
            driver.press(option);
            if (option == IDC_SESSION_SERIAL)
                driver.send(inPage(driver, IDC_SERIAL_COM3), BM_CLICK);
            PostMessageW(driver.window(), WM_COMMAND, IDOK, 0);
            PostMessageW(driver.window(), WM_COMMAND, IDCANCEL, 0);
        });
        const HRESULT code = dialog_->ShowModal(0, &result);
        EXPECT_EQ(GetCursor(), cursor);
        if (code != S_OK) {
            EXPECT_EQ(code, allowed);
            EXPECT_NE(takeError()->description.find(L"fails on demand"), std::wstring::npos);
        }
        return result == VARIANT_TRUE;
    }
    // Network streams that tell what they do, instead of real ones.
    void useFakeNetwork() {
        network_.reset();
        network_.emplace(link::kNetworkStreamClass, ports_.network());
    }

    RegistrySandbox sandbox_{HKEY_CURRENT_USER};
    FakeLink link_;
    FakeLink ports_{link_, "new "};
    bench::test::TcpPeer peer_;
    ClassObject serial_{link::kSerialStreamClass, ports_.port()};
    std::optional<ClassObject> network_{
        std::in_place, link::kNetworkStreamClass,
        benchLink().create<INetworkStream>(link::kNetworkStreamClass).Get()};
    com::ComPtr<INewSessionDialog2> dialog_ =
        kelUtils().create<INewSessionDialog2>(CLSID_NewSessionDialog);
};

TEST_F(SessionDialogTest, ShowsThePageOfWhatIsRemembered) {
    dialog_->put_ShowOpenFileOption(VARIANT_TRUE);
    for (const int option : {0, 212, 213, 211}) {
        if (option != 0) rememberSession(static_cast<DWORD>(option), 211);
        EXPECT_FALSE(show([&](DialogDriver& driver) {
            const int shown = option == 0 ? 211 : option;
            EXPECT_EQ(visiblePage(driver), shown);
            EXPECT_EQ(checkedOption(driver), shown);
            EXPECT_EQ(faultsOf(driver.window()), std::vector<std::string>());
            // Every other page can be chosen.
            const int other = shown == 213 ? 211 : shown + 1;
            driver.press(other);
            driver.waitUntil("the other page", [&] { return visiblePage(driver) == other; });
            EXPECT_EQ(faultsOf(driver.window()), std::vector<std::string>());
            driver.key(VK_ESCAPE);
        })) << option;
    }
    // Nothing of it was a success.
    EXPECT_EQ(session(), "LastConnection = dword:000000d3\nOption = dword:000000d3\n");
    dialog_->put_ShowOpenFileOption(VARIANT_FALSE);
    dialog_->put_Title(com::Bstr(L"Tide gauge").get());
    rememberSession(213, 212);
    show(
        [&](DialogDriver& driver) {
            EXPECT_EQ(visiblePage(driver), 211);
            EXPECT_FALSE(IsWindowVisible(driver.control(IDC_SESSION_FILE)));
            press(driver, IDCANCEL);
        },
        S_OK, L"Tide gauge");
}

TEST_F(SessionDialogTest, ConnectsToTheRememberedPort) {
    remember("SerialConnect\\App_Test\\Settings", "Port", "COM3");
    remember("SerialConnect\\App_Test\\Settings", "Baud", "19200");
    // By Enter on the radio button, which has the keyboard at first.
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        EXPECT_EQ(textOf(driver, IDC_SERIAL_COM2), L"Com2, free");
        EXPECT_EQ(textOf(driver, IDC_SERIAL_COM3), L"Com3, selected");
        EXPECT_EQ(driver.focus(), driver.control(IDC_SESSION_SERIAL));
        link_.calls.clear();
        driver.key(VK_RETURN);
    }));
    EXPECT_EQ(link_.takeWork(), "new OpenPort COM3: 19200\nLink.Port = serial2\n");
    EXPECT_EQ(session(), "LastConnection = dword:000000d3\nOption = dword:000000d3\n");
    // Another port by the keyboard, and the message that confirms.
    link_.hasPort = false;
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        driver.key(VK_TAB);
        driver.waitUntil("the ports",
                         [&] { return driver.focus() == inPage(driver, IDC_SERIAL_COM1); });
        driver.key(VK_RIGHT);
        driver.key(VK_SPACE);
        driver.waitUntil("COM2 is chosen",
                         [&] { return textOf(driver, IDC_SERIAL_COM2) == L"Com2, selected"; });
        PostMessageW(driver.window(),
                     RegisterWindowMessageW(L"KelUtils.CNewSessionDlg.UpdateSettings"), 0, 0);
    }));
    EXPECT_EQ(remembered("SerialConnect\\App_Test\\Settings"),
              "Baud = \"19200\"\nPort = \"COM2\"\n");
}

TEST_F(SessionDialogTest, AFailedConnectionIsToldAndNotRemembered) {
    ports_.busyPorts[L"COM2"] = ERROR_ACCESS_DENIED;
    rememberSession(211, 212);
    dialog_->put_AutoConnect(VARIANT_TRUE);
    remember("SerialConnect\\App_Test\\Settings", "Port", "COM2");
    EXPECT_FALSE(show([&](DialogDriver& driver) {
        waitForStatus(driver, IDC_SERIAL_STATUS, L"Unable to connect to 'COM2' (5)");
        press(driver, IDOK);
        driver.press(IDC_SESSION_NETWORK);
        driver.waitUntil("the page", [&] { return visiblePage(driver) == 212; });
        press(driver, IDCANCEL);
    }));
    EXPECT_EQ(session(), "LastConnection = dword:000000d4\nOption = dword:000000d3\n");
}

TEST_F(SessionDialogTest, ConnectsAtOnceWithoutBeingSeen) {
    dialog_->put_AutoConnect(VARIANT_TRUE);
    VARIANT_BOOL result = 7;
    EXPECT_EQ(dialog_->ShowModal(0, &result), S_OK);
    EXPECT_EQ(result, VARIANT_TRUE);
    EXPECT_EQ(remembered("SerialConnect\\App_Test\\Settings"),
              "Baud = \"9600\"\nPort = \"COM2\"\n");
    rememberPeer();
    rememberSession(212, 211);
    link_.hasPort = false;
    EXPECT_EQ(dialog_->ShowModal(0, &result), S_OK);
    EXPECT_EQ(result, VARIANT_TRUE);
    EXPECT_EQ(session(), "LastConnection = dword:000000d4\nOption = dword:000000d4\n");
    // A file is no connection.
    rememberSession(213, 212);
    link_.hasPort = false;
    EXPECT_FALSE(show([&](DialogDriver& driver) {
        EXPECT_EQ(visiblePage(driver), 211);
        press(driver, IDCANCEL);
    }));
}

TEST_F(SessionDialogTest, OpensAFile) {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    const std::wstring path = folder + std::wstring(L"kel-session-test.txt");
    std::fclose(_wfopen(path.c_str(), L"w"));
    std::string upper = com::narrow(path);
    for (char& letter : upper)
        letter = static_cast<char>(std::toupper(letter));
    remember("OpenDataFileDialog\\App_Test\\RecentFiles", "Count", 2);
    remember("OpenDataFileDialog\\App_Test\\RecentFiles\\0", "FileName", "C:\\gone.txt");
    remember("OpenDataFileDialog\\App_Test\\RecentFiles\\1", "FileName", upper);
    rememberSession(213, 212);
    dialog_->put_ShowOpenFileOption(VARIANT_TRUE);
    dialog_->put_ShowWorkspaceOption(VARIANT_TRUE);
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        const HWND name = inPage(driver, IDC_FILE_NAME);
        EXPECT_EQ(driver.send(name, CB_GETCOUNT), 2);
        driver.send(inPage(driver, IDOK), BM_CLICK);  // nothing, without a name
        driver.send(name, CB_SETCURSEL, 0);
        press(driver, IDOK);
        waitForStatus(driver, IDC_FILE_STATUS, L"Unable to open file: C:\\gone.txt");
        driver.send(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
        driver.send(inPage(driver, IDC_FILE_WORKSPACES), BM_CLICK);
        press(driver, IDOK);
    }));
    com::Bstr opened;
    dialog_->get_FileName(opened.put());
    EXPECT_EQ(opened.view(), path);
    VARIANT_BOOL isUsed = VARIANT_FALSE;
    dialog_->get_UseWorkspace(&isUsed);
    EXPECT_EQ(isUsed, VARIANT_TRUE);
    EXPECT_EQ(session(), "LastConnection = dword:000000d4\nOption = dword:000000d5\n");
    EXPECT_EQ(remembered("OpenDataFileDialog\\App_Test\\Settings"),
              "Use Workspaces = dword:00000001\n");
    EXPECT_EQ(remembered("OpenDataFileDialog\\App_Test\\RecentFiles"), "Count = dword:00000002\n");
    EXPECT_EQ(remembered("OpenDataFileDialog\\App_Test\\RecentFiles\\1"),
              "FileName = \"C:\\gone.txt\"\n");
    // A connection leaves no file.
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        driver.press(IDC_SESSION_SERIAL);
        driver.waitUntil("the page", [&] { return visiblePage(driver) == 211; });
        press(driver, IDOK);
    }));
    dialog_->get_FileName(opened.put());
    EXPECT_EQ(opened.view(), L"");
    DeleteFileW(path.c_str());
}

TEST_F(SessionDialogTest, LeavesAGatewayThatDoesNotAnswer) {
    const bench::test::TimeScale scale(L"100");
    network_.reset();
    network_.emplace(link::kNetworkStreamClass,
                     benchLink().create<INetworkStream>(link::kNetworkStreamClass).Get());
    rememberPeer();
    remember("KelGateConnect\\Connections\\0", "Address", "gate:127.0.0.1");
    rememberSession(212, 211);
    EXPECT_FALSE(show([&](DialogDriver& driver) {
        press(driver, IDOK);
        waitForStatus(
            driver, IDC_NETWORK_STATUS,
            L"Failed to connect to gate:127.0.0.1 : " + std::wstring(peer_.port().view()));
        press(driver, IDCANCEL);
    }));
    EXPECT_EQ(session(), "LastConnection = dword:000000d3\nOption = dword:000000d4\n");
}

TEST_F(SessionDialogTest, DoesNotConnectAgainToWhereItIs) {
    const auto stream = benchLink().create<INetworkStream>(link::kNetworkStreamClass);
    VARIANT_BOOL isOpen = VARIANT_FALSE;
    stream->ConnectTo(com::Bstr(L"127.0.0.1").get(), peer_.port().get(), &isOpen);
    ASSERT_EQ(isOpen, VARIANT_TRUE);
    const auto link = benchLink().create<IKelCommunicator>(bench::test::kCommunicatorClass);
    link->put_Port(stream.Get());
    dialog_->put_Communicator(link.Get());
    rememberPeer();
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        EXPECT_EQ(visiblePage(driver), 212);
        press(driver, IDOK);
    }));
    peer_.accept();
    stream->WriteByte('x', 1000, &isOpen);
    EXPECT_EQ(peer_.receive(1), "x");
    link->put_Port(nullptr);
    dialog_->put_Communicator(nullptr);
}

TEST_F(SessionDialogTest, ConnectsUnattendedOrTellsWhyNot) {
    dialog_->put_Unattended(VARIANT_TRUE);
    const auto attempt = [&] {
        VARIANT_BOOL result = 7;
        const HRESULT code = dialog_->ShowModal(0, &result);
        EXPECT_EQ(result == VARIANT_TRUE, code == S_OK);
        return code == S_OK ? L"" : takeError()->description;
    };
    EXPECT_EQ(attempt(), L"No connection is remembered for 'Test'");
    rememberSession(213, 211);
    EXPECT_EQ(attempt(), L"No serial port is remembered for 'Test'");
    remember("SerialConnect\\App_Test\\Settings", "Port", "COM2");
    link_.calls.clear();
    EXPECT_EQ(attempt(), L"");
    EXPECT_EQ(link_.takeWork(), "new OpenPort COM2: 9600\nLink.Port = serial2\n");
    link_.hasPort = false;
    ports_.busyPorts[L"COM2"] = ERROR_SHARING_VIOLATION;
    EXPECT_EQ(attempt(), L"Unable to connect to 'COM2' (32)");
    // A link that does not tell why has failed all the same.
    ports_.busyPorts[L"COM2"] = ERROR_SUCCESS;
    EXPECT_EQ(attempt(), L"Unable to connect to 'COM2' (0)");
    rememberSession(212, 212);
    EXPECT_EQ(attempt(), L"No network connection is remembered");
    rememberPeer();
    link_.calls.clear();
    EXPECT_EQ(attempt(), L"");
    EXPECT_EQ(link_.takeWork(), "Link.Port = foreign\n");
}

TEST_F(SessionDialogTest, RemembersTheConnectionOfItsHost) {
    dialog_->put_ApplicationName(com::Bstr(L"").get());
    EXPECT_EQ(dialog_->RememberConnection(), E_FAIL);
    EXPECT_EQ(takeError()->description, L"The link has no open port");
    link_.hasPort = true;
    link_.connectionString = L"COM7:";
    link_.baudRate = 4800;
    EXPECT_EQ(dialog_->RememberConnection(), S_OK);
    EXPECT_EQ(remembered("SerialConnect\\App_\\Settings"), "Baud = \"4800\"\nPort = \"COM7\"\n");
    EXPECT_EQ(remembered("NewSessionDialog\\App_"),
              "LastConnection = dword:000000d3\nOption = dword:000000d3\n");
    EXPECT_EQ(session(), "");
}

TEST_F(SessionDialogTest, AsksForThePasswordOfAGateway) {
    useFakeNetwork();
    ports_.gatewayPassword = L"sea";
    rememberSession(212, 211);
    rememberPeer();
    const auto answer = [](DialogDriver& driver, const wchar_t* password, int button) {
        driver.waitFor(L"Input Password");
        driver.setText(IDC_PASSWORD_TEXT, password);
        driver.press(button);
    };
    // Nobody is asked before the dialog is seen.
    dialog_->put_AutoConnect(VARIANT_TRUE);
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        const std::wstring failed =
            L"Failed to connect to 127.0.0.1 : " + std::wstring(peer_.port().view());
        EXPECT_EQ(textOf(driver, IDC_NETWORK_STATUS), failed);
        link_.calls.clear();
        press(driver, IDOK);
        answer(driver, L"lake", IDCANCEL);
        driver.waitFor(kSessionCaption);
        waitForStatus(driver, IDC_NETWORK_STATUS, failed);
        press(driver, IDOK);
        answer(driver, L"lake", IDOK);
        const HWND first = driver.window();
        driver.waitUntil("the second attempt", [&] { return !IsWindow(first); });
        answer(driver, L"sea", IDOK);
    }));
    const std::string work = link_.takeWork();
    EXPECT_NE(work.find("new Password = \"lake\"\nnew ConnectTo"), std::string::npos);
    EXPECT_NE(work.find("new Password = \"sea\"\nnew ConnectTo"), std::string::npos);
    EXPECT_EQ(joined(sandbox_.listing()).find("sea"), std::string::npos);

    dialog_->put_Unattended(VARIANT_TRUE);
    VARIANT_BOOL result = 7;
    EXPECT_EQ(dialog_->ShowModal(0, &result), E_FAIL);
    EXPECT_NE(takeError()->description.find(L": the gateway wants a password"), std::string::npos);
}

TEST_F(SessionDialogTest, EveryCallOfTheLinkMayFail) {
    useFakeNetwork();
    link_.answers["IsOpen"] = std::deque<bool>(500, false);
    link_.hasPort = true;
    for (const int option : {IDC_SESSION_SERIAL, IDC_SESSION_NETWORK}) {
        const long before = link_.callCount();
        EXPECT_TRUE(connectOverPage(option, S_OK));
        const long all = link_.callCount() - before;
        ASSERT_GT(all, 10);
        for (long failing = 1; failing <= all; ++failing) {
            SCOPED_TRACE(failing);
            link_.failCall(failing);
            connectOverPage(option, E_ACCESSDENIED);
        }
        link_.session()->ClearFailure();
    }
}

}  // namespace
}  // namespace kel::test
