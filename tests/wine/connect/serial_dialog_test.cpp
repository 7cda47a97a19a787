// The serial connection dialog: what it asks of the ports, and what becomes of the link.
#include <gtest/gtest.h>

#include <optional>

#include "com/variant.h"
#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "tests/wine/support/class_object.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/dialog_faults.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

constexpr wchar_t kSerialCaption[] = L"Connect to serial port";

class SerialDialogTest : public testing::Test {
protected:
    SerialDialogTest() {
        link_.connectionString = L"COM2:";
        link_.baudRate = 19200;
        for (const wchar_t* name : {L"COM4", L"COM5", L"COM6", L"COM7", L"COM8"})
            ports_.absentPorts[name] = 0;
        dialog_->put_Communicator(link_.communicator());
    }

    // Shows the dialog to a user. True when it ended with success.
    bool show(const std::function<void(DialogDriver&)>& steps, HRESULT expected = S_OK) {
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(kSerialCaption);
            steps(driver);
        });
        EXPECT_EQ(dialog_->ShowModal(0, &result), expected);
        return result == VARIANT_TRUE;
    }
    static void cancel(DialogDriver& driver) { driver.press(IDCANCEL); }

    static std::wstring states(DialogDriver& driver) {
        std::wstring states;
        for (int i = 0; i < 8; ++i) {
            const std::wstring text = driver.text(IDC_SERIAL_COM1 + i);
            states += text.substr(text.find(L' ') + 1, 1);
        }
        return states;
    }

    FakeLink link_;
    FakeLink ports_{link_, "new "};
    std::optional<ClassObject> serial_{std::in_place, link::kSerialStreamClass, ports_.port()};
    com::ComPtr<IConnectSerialDialog> dialog_ =
        kelUtils().create<IConnectSerialDialog>(CLSID_ConnectSerialDialog);
};

TEST_F(SerialDialogTest, LooksAtThePortsInOrder) {
    ports_.busyPorts[L"COM3"] = ERROR_ACCESS_DENIED;
    link_.tellsFetches = true;
    const bool result = show([&](DialogDriver& driver) {
        EXPECT_EQ(states(driver), L"fsbaaaaa");
        EXPECT_EQ(driver.text(IDC_SERIAL_RATE), L"19200");
        EXPECT_EQ(driver.text(IDC_SERIAL_STATUS), L"Click 'Connect' to start");
        EXPECT_EQ(driver.text(IDC_SERIAL_COM1), L"Com1, free");
        EXPECT_EQ(faultsOf(driver.window()), std::vector<std::string>());
        cancel(driver);
    });
    EXPECT_FALSE(result);
    EXPECT_EQ(
        link_.takeWork(),
        "Link.Port\nIsOpen\nBaudRate\nLink.Port\nConnectionString\n"
        "new PortExists COM1\nnew OpenPort COM1 9600\nnew Close\n"
        "new PortExists COM3\nnew OpenPort COM3 9600\nnew PortExists COM4\n"
        "new PortExists COM5\nnew PortExists COM6\nnew PortExists COM7\nnew PortExists COM8\n");
}

TEST_F(SerialDialogTest, ChoosesTheLowestFreePort) {
    link_.hasPort = false;
    ports_.absentPorts[L"COM1"] = 0;
    ports_.busyPorts[L"COM2"] = ERROR_SHARING_VIOLATION;
    dialog_->put_Title(com::Bstr(L"").get());
    show([&](DialogDriver& driver) {
        EXPECT_EQ(states(driver), L"absaaaaa");
        EXPECT_EQ(driver.text(IDC_SERIAL_RATE), L"9600");
        // Another one, busy or not, is chosen by a click: the former is free then.
        driver.press(IDC_SERIAL_COM2);
        driver.waitUntil("COM2 is chosen", [&] { return states(driver) == L"asfaaaaa"; });
        cancel(driver);
    });
}

TEST_F(SerialDialogTest, ConnectsAndClosesTheFormerPortThen) {
    link_.tellsFetches = true;
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        driver.press(IDC_SERIAL_COM3);
        driver.waitUntil("COM3 is chosen", [&] { return states(driver)[2] == L's'; });
        link_.calls.clear();
        driver.press(IDOK);
    }));
    EXPECT_EQ(link_.takeWork(),
              "Link.Port\nConnectionString\nnew OpenPort COM3: 19200\nLink.Port\nClose\n"
              "Link.Port = serial2\n");
}

TEST_F(SerialDialogTest, TheSamePortOnlyGetsItsRate) {
    link_.connectionString = L"com2";
    EXPECT_TRUE(show([&](DialogDriver& driver) {
        driver.send(driver.control(IDC_SERIAL_RATE), CB_SETCURSEL, 0);
        link_.calls.clear();
        driver.press(IDOK);
    }));
    EXPECT_EQ(link_.takeWork(), "ConnectionString\nBaudRate = 300\n");
    EXPECT_EQ(link_.baudRate, 300);
}

TEST_F(SerialDialogTest, AFailureIsToldAndChangesNothing) {
    ports_.busyPorts[L"COM3"] = ERROR_ACCESS_DENIED;
    EXPECT_FALSE(show([&](DialogDriver& driver) {
        driver.press(IDC_SERIAL_COM3);
        driver.waitUntil("COM3 is chosen", [&] { return states(driver)[2] == L's'; });
        link_.calls.clear();
        driver.press(IDOK);
        driver.waitUntil("the failure is shown", [&] {
            return driver.text(IDC_SERIAL_STATUS) == L"Unable to connect to 'COM3' (error:5)";
        });
        // The choice has no colon, so the button is still the chosen one.
        driver.press(IDC_SERIAL_COM3);
        driver.waitUntil("COM3 is chosen", [&] { return states(driver)[2] == L's'; });
        cancel(driver);
    }));
    EXPECT_EQ(link_.takeWork().find("Link.Port"), std::string::npos);
}

TEST_F(SerialDialogTest, EveryCallOfTheLinkMayFail) {
    const auto connect = [&](DialogDriver& driver) {
        driver.send(driver.control(IDC_SERIAL_COM3), BM_CLICK);
        // Where the first ends it, the second finds nobody.
        PostMessageW(driver.window(), WM_COMMAND, IDOK, 0);
        PostMessageW(driver.window(), WM_COMMAND, IDCANCEL, 0);
    };
    EXPECT_TRUE(show(connect));
    const long all = link_.callCount();
    ASSERT_GT(all, 15);
    for (long failing = 1; failing <= all; ++failing) {
        SCOPED_TRACE(failing);
        link_.failCall(failing);
        link_.calls.clear();
        VARIANT_BOOL result = 7;
        DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(kSerialCaption);
            connect(driver);
        });
        const HRESULT code = dialog_->ShowModal(0, &result);
        if (code != S_OK) {
            EXPECT_EQ(code, E_ACCESSDENIED);
            EXPECT_NE(takeError()->description.find(L"fails on demand"), std::wstring::npos);
        }
        // The former port is closed only once the new one is open.
        const std::string work = link_.takeWork();
        const std::size_t closed = work.find("\nClose\n");
        if (closed != std::string::npos) {
            EXPECT_LT(work.find("new OpenPort COM3: "), closed);
        }
    }
}

TEST_F(SerialDialogTest, WithoutTheComponentItStillOpens) {
    serial_.reset();
    serial_.emplace(link::kSerialStreamClass, nullptr);
    EXPECT_FALSE(show(
        [&](DialogDriver& driver) {
            EXPECT_NE(driver.text(IDC_SERIAL_STATUS), L"Click 'Connect' to start");
            cancel(driver);
        },
        E_POINTER));
    dialog_->put_Communicator(nullptr);
    VARIANT_BOOL result = 7;
    EXPECT_EQ(dialog_->ShowModal(0, &result), E_INVALIDARG);
    EXPECT_EQ(result, VARIANT_FALSE);
    EXPECT_EQ(dialog_->ShowModal(0, nullptr), E_POINTER);
}

}  // namespace
}  // namespace kel::test
