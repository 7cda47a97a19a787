// The network connection dialog: its list, what is stored of it, and what becomes of the link.
#include <gtest/gtest.h>
#include <winsock2.h>

#include <commctrl.h>

#include "com/text.h"
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

constexpr wchar_t kNetworkCaption[] = L"Connect";
constexpr char kKey[] = "Software\\Kelvra\\Components\\KelGateConnect\\Connections";

class NetworkDialogTest : public testing::Test {
protected:
    NetworkDialogTest() { dialog_->put_Communicator(link_.communicator()); }

    // Stores connections "A", "B", ... on this port.
    void store(int count, const std::string& port) {
        const std::string section = "KelGateConnect\\Connections";
        for (int i = 0; i < count; ++i) {
            const std::string connection = section + "\\" + std::to_string(i);
            remember(connection, "Name", std::string(1, static_cast<char>('A' + i)));
            remember(connection, "Address", "127.0.0.1");
            remember(connection, "Port", port);
        }
        remember(section, "Count", static_cast<DWORD>(count));
    }
    // The stored names, in their order.
    static std::string stored() {
        std::string names;
        DWORD count = 0;
        DWORD size = sizeof count;
        RegGetValueA(HKEY_CURRENT_USER, kKey, "Count", RRF_RT_REG_DWORD, nullptr, &count, &size);
        for (DWORD i = 0; i < count; ++i) {
            char name[300] = "?";
            size = sizeof name;
            RegGetValueA(HKEY_CURRENT_USER, (std::string(kKey) + "\\" + std::to_string(i)).c_str(),
                         "Name", RRF_RT_REG_SZ, nullptr, name, &size);
            names += (names.empty() ? "" : " ") + std::string(name);
        }
        return names;
    }

    bool show(const std::function<void(DialogDriver&)>& steps, HRESULT expected = S_OK) {
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(kNetworkCaption);
            steps(driver);
        });
        EXPECT_EQ(dialog_->ShowModal(0, &result), expected);
        return result == VARIANT_TRUE;
    }

    static HWND tree(DialogDriver& driver) { return driver.control(IDC_NETWORK_LIST); }
    static HTREEITEM item(DialogDriver& driver, int index) {
        auto found = driver.send(tree(driver), TVM_GETNEXTITEM, TVGN_ROOT, 0);
        while (index-- > 0)
            found = driver.send(tree(driver), TVM_GETNEXTITEM, TVGN_NEXT, found);
        return reinterpret_cast<HTREEITEM>(found);
    }
    static void select(DialogDriver& driver, int index) {
        driver.send(tree(driver), TVM_SELECTITEM, TVGN_CARET,
                    index < 0 ? 0 : reinterpret_cast<LPARAM>(item(driver, index)));
    }
    // What the tooltip of an item says.
    static std::wstring tip(DialogDriver& driver, int index) {
        wchar_t text[80] = L"";
        NMTVGETINFOTIPW asked{};
        asked.hdr = {tree(driver), IDC_NETWORK_LIST, static_cast<UINT>(TVN_GETINFOTIPW)};
        asked.pszText = text;
        asked.cchTextMax = 80;
        asked.hItem = item(driver, index);
        driver.send(driver.window(), WM_NOTIFY, IDC_NETWORK_LIST, reinterpret_cast<LPARAM>(&asked));
        return text;
    }
    // Fills the settings of a connection and closes them.
    static void describe(DialogDriver& driver, int button, const wchar_t* name) {
        driver.press(button);
        driver.waitFor(L"Connection settings");
        driver.setText(IDC_CONNECTION_NAME, name);
        EXPECT_EQ(faultsOf(driver.window()), std::vector<std::string>());
        driver.press(IDOK);
        driver.waitFor(kNetworkCaption);
    }

    std::string listening() const { return bench::test::text(peer_.port()); }

    RegistrySandbox sandbox_{HKEY_CURRENT_USER};
    FakeLink link_;
    bench::test::TcpPeer peer_;
    ClassObject network_{link::kNetworkStreamClass,
                         benchLink().create<INetworkStream>(link::kNetworkStreamClass).Get()};
    com::ComPtr<IConnectKelGateDialog> dialog_ =
        kelUtils().create<IConnectKelGateDialog>(CLSID_ConnectKelGateDialog);
};

TEST_F(NetworkDialogTest, OffersAConnectionWhereThereIsNone) {
    EXPECT_FALSE(show([&](DialogDriver& driver) {
        EXPECT_EQ(tip(driver, 0), L"Connection1 - 127.0.0.1 : 4444");
        EXPECT_EQ(faultsOf(driver.window()), std::vector<std::string>());
        driver.press(IDCANCEL);
    }));
    EXPECT_EQ(stored(), "");
    show([&](DialogDriver& driver) {
        describe(driver, IDC_NETWORK_NEW, L"Buoy");
        driver.press(IDCANCEL);
    });
    EXPECT_EQ(stored(), "Buoy");
}

TEST_F(NetworkDialogTest, KeepsEditsAndDeletionsAlsoWhenCancelled) {
    store(3, "4444");
    EXPECT_FALSE(show([&](DialogDriver& driver) {
        select(driver, 0);
        driver.press(IDC_NETWORK_DELETE);
        driver.waitUntil("A is gone", [&] { return tip(driver, 0)[0] == L'B'; });
        EXPECT_EQ(tip(driver, 1)[0], L'C');
        select(driver, 1);
        describe(driver, IDC_NETWORK_EDIT, L"D & E");
        EXPECT_EQ(tip(driver, 1), L"D & E - 127.0.0.1 : 4444");
        describe(driver, IDC_NETWORK_NEW, L"F");
        driver.press(IDCANCEL);
    }));
    EXPECT_EQ(stored(), "B D & E F");
    show([&](DialogDriver& driver) {
        for (int i = 0; i < 3; ++i)
            driver.send(driver.control(IDC_NETWORK_DELETE), BM_CLICK);
        EXPECT_EQ(tip(driver, 0), L"Connection1 - 127.0.0.1 : 4444");
        driver.press(IDCANCEL);
    });
    EXPECT_EQ(stored(), "");
}

TEST_F(NetworkDialogTest, MovesWhatItHasConnectedToTheFront) {
    store(3, listening());
    link_.calls.clear();
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        select(driver, 2);
        driver.press(IDOK);
    }));
    EXPECT_EQ(stored(), "C A B");
    EXPECT_EQ(link_.takeWork(), "Close\nLink.Port = foreign\n");
    // A double click on an item, the one that is selected at first.
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        RECT place{};
        *reinterpret_cast<HTREEITEM*>(&place) = item(driver, 1);
        driver.send(tree(driver), TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&place));
        const LPARAM point = MAKELPARAM(place.left + 2, place.top + 2);
        PostMessageW(tree(driver), WM_LBUTTONDBLCLK, MK_LBUTTON, point);
    }));
    EXPECT_EQ(stored(), "A C B");
}

TEST_F(NetworkDialogTest, AFailureChangesNothing) {
    store(2, "1");
    link_.calls.clear();
    EXPECT_FALSE(show([&](DialogDriver& driver) {
        select(driver, 1);
        driver.press(IDOK);
        driver.waitUntil("the failure is shown", [&] {
            return driver.text(IDC_NETWORK_STATUS) == L"Failed to connect to 127.0.0.1 : 1";
        });
        driver.press(IDCANCEL);
    }));
    EXPECT_EQ(stored(), "A B");
    EXPECT_EQ(link_.takeWork(), "");
}

TEST_F(NetworkDialogTest, DoesNothingWhileNothingIsSelected) {
    store(2, "4444");
    show([&](DialogDriver& driver) {
        select(driver, -1);
        for (const int button : {IDOK, IDC_NETWORK_NEW, IDC_NETWORK_EDIT, IDC_NETWORK_DELETE})
            driver.send(driver.control(button), BM_CLICK);
        EXPECT_EQ(driver.text(IDC_NETWORK_STATUS), L"Select connection and click 'Connect'");
        driver.press(IDCANCEL);
    });
    EXPECT_EQ(stored(), "A B");
}

TEST_F(NetworkDialogTest, EveryCallOfTheLinkMayFail) {
    store(2, listening());
    for (const wchar_t* failing : {L"", L"get_Port", L"Close", L"put_Port"}) {
        SCOPED_TRACE(com::narrow(std::wstring_view(failing)));
        const bool fails = failing[0] != L'\0';
        if (fails) link_.failMethod(failing);
        EXPECT_EQ(show([&](DialogDriver& driver) {
                      driver.press(IDOK);
                      if (!fails) return;
                      driver.waitUntil("the failure is shown", [&] {
                          return driver.text(IDC_NETWORK_STATUS).find(L"fails on demand") !=
                                 std::wstring::npos;
                      });
                      driver.press(IDCANCEL);
                  }),
                  !fails);
        EXPECT_EQ(stored(), "A B");
    }
}

}  // namespace
}  // namespace kel::test
