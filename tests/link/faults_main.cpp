// Tests the rules: puts faults into a link that keeps them all, one after the other, and expects
// the rule of each to find it.
#include <winsock2.h>

#include <algorithm>
#include <cstdio>

#include "com/module.h"
#include "hosts/conformance/check.h"
#include "tests/link/faults.h"

namespace {

using namespace kel;
using namespace kel::conformance;

void* replaceMember(IUnknown* object, unsigned slot, void* member) {
    void** place = *reinterpret_cast<void***>(object) + slot;
    DWORD before = 0;
    if (!VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before)) throw com::lastError();
    void* replaced = *place;
    *place = member;
    VirtualProtect(place, sizeof *place, before, &before);
    return replaced;
}

const Rule& ruleNamed(std::string_view beginning) {
    const auto found = std::ranges::find_if(
        rules(), [&](const Rule& rule) { return rule.name.starts_with(beginning); });
    if (found != rules().end()) return *found;
    throw std::runtime_error("there is no rule " + std::string(beginning));
}

// What the rule of a fault says about it.
Verdict find(const Fault& fault, const Setup& setup) {
    const Link link(setup, fault.place == Place::kSerial ? Kind::kSerial : Kind::kNetwork);
    ComPtr<IUnknown> object = link.closedWire().stream;
    if (fault.place == Place::kLink) object = link.communicator();
    replacedMember = replaceMember(object.Get(), fault.slot, fault.member);
    const Verdict verdict = check(ruleNamed(fault.rule), link);
    replaceMember(object.Get(), fault.slot, replacedMember);
    return verdict;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    WSADATA sockets;
    Setup setup;
    if (count != 5 || FAILED(OleInitialize(nullptr)) || WSAStartup(MAKEWORD(2, 2), &sockets) != 0 ||
        FAILED(CLSIDFromProgID(arguments[1], &setup.communicator))) {
        std::fputs("usage: kel_link_faults PROGID SERIAL-PORT HOST PORT\n", stderr);
        return 2;
    }
    com::attachModule(GetModuleHandleW(nullptr));
    setup.serialPort = arguments[2];
    setup.host = arguments[3];
    setup.port = arguments[4];
    setup.echoing = true;
    int missed = 0;
    for (const Fault& fault : faults()) {
        const Verdict verdict = find(fault, setup);
        const bool found = verdict.kind == Verdict::Kind::kToMend;
        missed += !found;
        std::printf("%s: %s: %s\n", found ? "found" : "MISSED", fault.rule, verdict.text.c_str());
        std::fflush(stdout);
    }
    com::detachModule();
    WSACleanup();
    OleUninitialize();
    return missed > 0;
}
