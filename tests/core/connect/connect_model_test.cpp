// What the connection dialogs decide without a window.
#include <gtest/gtest.h>

#include <algorithm>

#include "dialogs/connect/model/connection_list.h"
#include "dialogs/connect/model/file_filter.h"
#include "dialogs/connect/model/serial_ports.h"
#include "dialogs/connect/model/session_options.h"

namespace kel::connect {
namespace {

// Ports as a text: a letter for each, (a)bsent, (f)ree or (b)usy; afterwards (s)elected too.
TEST(SerialPorts, ProbeFindsEachPortAndChoosesTheLowestFreeOne) {
    const struct {
        const wchar_t* current;
        const char* ports;
        const char* states;
        const wchar_t* chosen;
        const char* opened;
    } rows[] = {
        {L"", "abffaaab", "absfaaab", L"COM3", "2348"},
        {L"", "bbaaaaaa", "bbaaaaaa", L"", "12"},
        {L"COM2", "fffaaaaa", "fsfaaaaa", L"COM2", "13"},
        {L"com2:", "abaaaaaa", "asaaaaaa", L"com2:", ""},
        // One that is not offered is current all the same: none is chosen in its place.
        {L"COM9", "faaaaaaa", "faaaaaaa", L"COM9", "1"},
        {L"127.0.0.1:4444", "faaaaaaf", "faaaaaaf", L"127.0.0.1:4444", "18"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.ports);
        std::string opened;
        const auto index = [](const std::wstring& name) {
            return static_cast<std::size_t>(name.at(3) - L'1');
        };
        std::wstring current = row.current;
        const auto found = probePorts(
            current, {[&](const std::wstring& name) { return row.ports[index(name)] != 'a'; },
                      [&](const std::wstring& name) {
                          opened += static_cast<char>('1' + index(name));
                          return row.ports[index(name)] == 'f';
                      }});
        std::string states;
        for (const PortState state : found)
            states += "afsb"[static_cast<int>(state)];
        EXPECT_EQ(states, row.states);
        EXPECT_EQ(current, row.chosen);
        EXPECT_EQ(opened, row.opened);
    }
}

TEST(SerialPorts, NamesAndRates) {
    EXPECT_EQ(shownName(L"COM3:"), L"COM3");
    EXPECT_EQ(shownName(L""), L"");
    EXPECT_EQ(openedName(L"COM3"), L"COM3:");
    EXPECT_EQ(openedName(L"COM3:"), L"COM3:");
    EXPECT_TRUE(isSamePort(L"com3:", L"COM3"));
    EXPECT_FALSE(isSamePort(L"COM3", L"COM30"));
    EXPECT_EQ(listedRate("115200"), 115200);
    for (const char* const rate : {"", "1200 ", "14400", "9600x"})
        EXPECT_EQ(listedRate(rate), 9600) << rate;
    EXPECT_EQ(buttonText(3, PortState::Busy), L"Com3, busy");
}

std::wstring namesOf(const std::vector<NetworkConnection>& connections) {
    std::wstring names;
    for (const NetworkConnection& each : connections)
        names += each.name + L' ';
    return names;
}

TEST(ConnectionList, KeepsTheOneUsedLastInFront) {
    ConnectionList list({{.name = L"A"}, {.name = L"B"}, {.name = L"C"}});
    list.use(2);
    EXPECT_EQ(namesOf(list.all()), L"C A B ");
    list.setPassword(1, L"secret");
    list.use(1);
    EXPECT_EQ(list.all()[0].password, L"secret");
    list.remove(1);
    list.replace(1, {.name = L"D"});
    list.add({.name = L"E"});
    EXPECT_EQ(namesOf(list.stored()), L"A D E ");
}

TEST(ConnectionList, OffersOneWhereThereIsNone) {
    ConnectionList list;
    ASSERT_EQ(list.all().size(), 1u);
    EXPECT_EQ(list.all()[0].description(), L"Connection1 - 127.0.0.1 : 4444");
    EXPECT_TRUE(list.stored().empty());
    // Whatever is done with it makes it a connection of the user's.
    ConnectionList used = list;
    used.use(0);
    EXPECT_EQ(used.stored().size(), 1u);
    list.replace(0, list.all()[0]);
    EXPECT_EQ(list.stored().size(), 1u);
    list.remove(0);
    EXPECT_EQ(list.all().size(), 1u);
    EXPECT_TRUE(list.stored().empty());
}

TEST(SessionOptions, ThePresentPortThenWhatIsRemembered) {
    const struct {
        PresentPort port;
        std::optional<std::uint32_t> option;
        bool offersFiles;
        int first;
        bool connectsAtOnce;
    } rows[] = {
        {PresentPort::None, {}, true, 211, true},
        {PresentPort::None, 211, true, 211, true},
        {PresentPort::None, 212, false, 212, true},
        {PresentPort::None, 213, true, 213, false},
        // The page shown in its place is not connected either.
        {PresentPort::None, 213, false, 211, false},
        {PresentPort::None, 0, true, 211, false},
        {PresentPort::None, 0xFFFFFFFF, true, 211, false},
        {PresentPort::Network, 211, true, 212, true},
        {PresentPort::Network, 213, true, 212, true},
        {PresentPort::OpenSerial, 212, true, 211, true},
        {PresentPort::OpenSerial, 213, true, 211, true},
    };
    for (const auto& row : rows) {
        const RememberedSession remembered{.option = row.option, .lastConnection = 212};
        EXPECT_EQ(static_cast<int>(firstOption(row.port, remembered, row.offersFiles)), row.first)
            << static_cast<int>(row.port) << ' ' << row.option.value_or(1);
        EXPECT_EQ(connectsAtOnce(row.port, remembered), row.connectsAtOnce)
            << row.option.value_or(1);
    }
    EXPECT_EQ(remember(SessionOption::Network).lastConnection, 212u);
    EXPECT_EQ(remember(SessionOption::File).option, 213u);
    EXPECT_FALSE(remember(SessionOption::File).lastConnection);
}

TEST(FileFilter, MakesAListThatTheChooserReads) {
    const struct {
        std::wstring filter;
        const wchar_t* list;  // with semicolons for its NULs
    } rows[] = {
        {L"", L"All Files (.*);*.*;"},
        {L"Data|*.dat|", L"Data;*.dat;"},
        {L"Data|*.dat|Text|*.txt|All|*.*|", L"Data;*.dat;Text;*.txt;All;*.*;"},
        {L"Data|*.dat", L"Data;*.dat;"},
        {L"Data", L"Data;*.*;"},
        {L"Data|*.dat|Text|", L"Data;*.dat;Text;*.*;"},
        {L"|*.dat|", L"*.dat;*.dat;"},
        {L"||Data|*.dat|", L"Data;*.dat;"},
        {L"||||", L"All Files (.*);*.*;"},
        {std::wstring(L"Da\0ta|*.dat|", 12), L"Data;*.dat;"},
        // The second byte of this letter is a bar in a double-byte code page.
        {L"\u30BD\u30D5\u30C8|*.dat|", L"\u30BD\u30D5\u30C8;*.dat;"},
    };
    for (const auto& row : rows) {
        std::wstring list = chooserFilter(row.filter);
        std::ranges::replace(list, L'\0', L';');
        EXPECT_EQ(list, row.list);
    }
}

}  // namespace
}  // namespace kel::connect
