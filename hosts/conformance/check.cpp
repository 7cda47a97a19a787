#include "hosts/conformance/check.h"

#include <exception>

#include "interfaces/link_classes.h"

namespace kel::conformance {
namespace {

std::string line(const Verdict& verdict) {
    switch (verdict.kind) {
        case Verdict::Kind::kKept:
            return "ok\n";
        case Verdict::Kind::kToMend:
            return "MEND: " + verdict.text + "\n";
        case Verdict::Kind::kNotTried:
            return "not tried: " + verdict.text + "\n";
    }
    return {};
}

template <class Body>
Verdict verdictOf(Body&& body) {
    try {
        body();
        return {Verdict::Kind::kKept, {}};
    } catch (const NotTried& reason) {
        return {Verdict::Kind::kNotTried, reason.what()};
    } catch (const Mend& finding) {
        return {Verdict::Kind::kToMend, finding.what()};
    } catch (const std::exception&) {
        return {Verdict::Kind::kToMend, com::narrow(com::textOfCurrentException())};
    }
}

// The library that serves a class in this process.
HMODULE libraryOf(const CLSID& identifier) {
    wchar_t path[MAX_PATH];
    const std::wstring key = L"CLSID\\" + com::guidText(identifier) + L"\\InprocServer32";
    DWORD size = sizeof path;
    if (RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, path, &size))
        return nullptr;
    return GetModuleHandleW(path);
}

void leavesNothingBehind(const Setup& setup) {
    bool asked = false;
    for (const CLSID& identifier :
         {setup.communicator, link::kSerialStreamClass, link::kNetworkStreamClass}) {
        const HMODULE library = libraryOf(identifier);
        const auto canUnload = reinterpret_cast<HRESULT(WINAPI*)()>(reinterpret_cast<void*>(
            library ? GetProcAddress(library, "DllCanUnloadNow") : nullptr));
        if (!canUnload) continue;
        asked = true;
        expect(canUnload() == S_OK, "DllCanUnloadNow to be S_OK when all objects are released",
               "it is not");
    }
    if (!asked) throw NotTried("no library of the link has DllCanUnloadNow in this process");
}

}  // namespace

Verdict check(const Rule& rule, const Link& link) {
    // The reason of a failure is not to be one that an earlier call left.
    SetErrorInfo(0, nullptr);
    return verdictOf([&] { play(rule, link); });
}

int checkAll(const Setup& setup, const std::function<void(const std::string&)>& print) {
    int toMend = 0;
    const auto tell = [&](const Verdict& verdict) {
        toMend += verdict.kind == Verdict::Kind::kToMend;
        print(line(verdict));
    };
    const Link serial(setup, Kind::kSerial);
    const Link network(setup, Kind::kNetwork);
    const auto checkOn = [&](const char* what, const Rule& rule, const Link& link) {
        print(std::string(what) + rule.name + ": ");
        tell(check(rule, link));
    };
    for (const Rule& rule : rules()) {
        const bool each = rule.subject == "stream";
        if (each || rule.subject == "serial") checkOn("serial, ", rule, serial);
        if (each || rule.subject == "network") checkOn("network, ", rule, network);
        if (rule.subject == "link")
            checkOn("link, ", rule, setup.serialPort.empty() ? network : serial);
    }
    print("link, no object is left at the end: ");
    tell(verdictOf([&] { leavesNothingBehind(setup); }));
    return toMend;
}

}  // namespace kel::conformance
