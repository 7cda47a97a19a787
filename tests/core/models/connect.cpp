// What the connection dialogs decide.
#include <algorithm>

#include "dialogs/connect/model/connection_list.h"
#include "dialogs/connect/model/file_filter.h"
#include "dialogs/connect/model/serial_ports.h"
#include "dialogs/connect/model/session_options.h"
#include "tests/core/models/subject.h"

namespace kel::connect {
namespace {

using test::narrow;
using test::shown;
using test::Subject;
using test::Words;

// "current ports": a letter for each port, (a)bsent, (f)ree or (b)usy; (s)elected too in what
// follows, before those that were opened and the one that is chosen.
const Subject kProbe("probe of the ports", [](std::wstring current, const std::string& ports) {
    std::string states, opened;
    const auto portAt = [&](const std::wstring& name) {
        return ports[static_cast<std::size_t>(name.at(3) - L'1')];
    };
    const auto found =
        probePorts(current, {[&](const std::wstring& name) { return portAt(name) != 'a'; },
                             [&](const std::wstring& name) {
                                 opened += static_cast<char>(name.at(3));
                                 return portAt(name) == 'f';
                             }});
    for (const PortState state : found)
        states += "afsb"[static_cast<int>(state)];
    return states + " " + opened + " '" + narrow(current) + "'";
});

const Subject kNames("names of a port", [](const std::wstring& name, const std::wstring& other) {
    return shown(shownName(name), openedName(name), isSamePort(name, other) ? "same" : "another");
});
const Subject kButton("button of a port", buttonText);
const Subject kRate("rate of a port", listedRate);

// Shows all connections, then how many are stored.
const Subject kList("list of connections",
                    [list = ConnectionList()](const std::string& act, Words& words) mutable {
                        const auto index = [&] { return words.number<std::size_t>(); };
                        const auto named = [&] { return NetworkConnection{.name = words.wide()}; };
                        if (act == "kept") list = ConnectionList({named(), named(), named()});
                        if (act == "add") list.add(named());
                        if (act == "use") list.use(index());
                        if (act == "remove") list.remove(index());
                        if (act == "keep") list.replace(index(), list.all()[0]);
                        const std::size_t at = act == "replace" || act == "password" ? index() : 0;
                        if (act == "replace") list.replace(at, named());
                        if (act == "password") list.setPassword(at, words.wide());
                        std::wstring text;
                        for (const NetworkConnection& each : list.all())
                            text += (act == "describe" ? each.description() : each.name) + L" " +
                                    (each.password.empty() ? L"" : L"(" + each.password + L") ");
                        return narrow(text) + std::to_string(list.stored().size());
                    });

// "present-port remembered-option offers-files", 1 where nothing is remembered.
const Subject kSession("first page of a session", [](PresentPort port, std::uint32_t option,
                                                     const std::string& offered) {
    RememberedSession remembered{.option = option, .lastConnection = 212};
    if (option == 1u) remembered.option.reset();
    return shown(firstOption(port, remembered, offered == "files"),
                 connectsAtOnce(port, remembered) ? "at once" : "not at once");
});

const Subject kRemembered("remembered session", [](SessionOption used) {
    const auto [option, last] = remember(used);
    return shown(option, last);
});

// With semicolons for NULs.
const Subject kFilter("file filter", [](const std::wstring& filter) {
    std::wstring list = chooserFilter(filter);
    std::ranges::replace(list, L'\0', L';');
    return narrow(list);
});

}  // namespace
}  // namespace kel::connect
