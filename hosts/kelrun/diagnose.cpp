#include "hosts/kelrun/diagnose.h"

#include "com/apartment.h"
#include "com/handles.h"
#include "com/text.h"
#include "hosts/kelrun/model/diagnosis.h"
#include "hosts/shared/activation_context.h"
#include "hosts/shared/create.h"
#include "hosts/shared/library_contents.h"
#include "hosts/shared/registration_source.h"
#include "interfaces/KelUtils.h"

namespace kel::kelrun {
namespace {

constexpr int kHighestPort = 255;

PortState::Kind stateOf(const std::string& name) {
    const std::wstring path = L"\\\\.\\" + com::widen(name, CP_UTF8);
    const com::FileHandle port(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                           OPEN_EXISTING, 0, nullptr));
    if (port) return PortState::Kind::kFree;
    switch (GetLastError()) {
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return PortState::Kind::kBusy;
        default:
            return PortState::Kind::kAbsent;
    }
}

// Those that are there, and the one that the user named.
std::vector<PortState> findPorts(const std::string& named) {
    std::vector<PortState> ports;
    bool isNamedThere = named.empty();
    for (int i = 1; i <= kHighestPort; ++i) {
        const std::string name = "COM" + std::to_string(i);
        const PortState::Kind kind = stateOf(name);
        if (kind == PortState::Kind::kAbsent) continue;
        ports.push_back({name, kind});
        isNamedThere |= com::sameName(com::widen(name), com::widen(named, CP_UTF8));
    }
    if (!isNamedThere) ports.push_back({named, stateOf(named)});
    return ports;
}

// Registered as it must be, and yet it may not come.
template <class Interface>
void tryToCreate(const std::string& program, RegistrationReport& report) {
    if (!report.faults.empty()) return;
    try {
        create<Interface>(program, "the system does not find it, though all of its keys are there");
    } catch (const Failure& failure) {
        report.addFault(failure.what(),
                        report.place == Place::kUser
                            ? "register it for all users with regsvr32: older versions of Wine do "
                              "not look for what is registered for one user, nor does Windows for "
                              "programs that run as an administrator"
                            : "register it again; if that does not help, look for what the reason "
                              "names");
    }
}

}  // namespace

ExitCode diagnose(const Options& options, ConsoleOutput& output) {
    const com::Apartment apartment;
    const auto manifest = manifestBesideProgram();
    const RegistrationSource source = registrationSource();
    Diagnosis found;
    found.library = checkLibrary(kelUtilsLibrary(), source);
    tryToCreate<IPreprocessorControl>("KelUtils.Preprocessor", found.library);
    found.linkName = options.link;
    found.link = checkLink(options.link, linkParts(), source);
    tryToCreate<IKelCommunicator>(options.link, found.link);
    found.ports = findPorts(options.target.port);
    output.write(diagnosisText(found));
    return isWell(found) ? ExitCode::kRan : ExitCode::kNotRegistered;
}

}  // namespace kel::kelrun
