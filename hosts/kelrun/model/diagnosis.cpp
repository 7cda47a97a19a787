#include "hosts/kelrun/model/diagnosis.h"

#include "hosts/shared/model/visible_text.h"

namespace kel::kelrun {
namespace {

using host::Place;
using host::RegistrationReport;

std::string placeText(const RegistrationReport& report) {
    switch (report.place) {
        case Place::kUser:
            return "registered for this user";
        case Place::kMachine:
            return "registered for all users";
        case Place::kManifest:
            return "made known by " + report.manifest;
        default:
            return "not registered";
    }
}

std::string fileText(const RegistrationReport& report) {
    if (!report.image.isThere) return report.file;
    std::string text = report.file;
    if (!report.image.version.empty()) text += ", version " + report.image.version;
    if (report.image.bits != 0) text += ", " + std::to_string(report.image.bits) + "-bit";
    return text;
}

std::string reportText(const std::string& name, const RegistrationReport& report) {
    std::string text = host::oneLine(name + ": " + placeText(report)) + "\n";
    const auto add = [&](const char* mark, const std::string& line) {
        if (!line.empty()) text += std::string("  ") + mark + host::oneLine(line) + "\n";
    };
    add("", fileText(report));
    add("", report.contents);
    for (const std::string& note : report.notes)
        add("note: ", note);
    for (const std::string& fault : report.faults)
        add("WRONG: ", fault);
    for (const std::string& remedy : report.remedies)
        add("TO DO: ", remedy);
    return text;
}

std::string portsText(const std::vector<PortState>& ports) {
    const struct {
        PortState::Kind kind;
        const char* word;
    } kinds[] = {{PortState::Kind::kFree, " free"},
                 {PortState::Kind::kBusy, " busy (in use by another program, or not permitted)"},
                 {PortState::Kind::kAbsent, " absent"}};
    std::string text;
    for (const auto& [kind, word] : kinds) {
        std::string names;
        for (const PortState& port : ports)
            if (port.kind == kind) names += (names.empty() ? "" : ", ") + host::oneLine(port.name);
        if (!names.empty()) text += (text.empty() ? "" : "; ") + names + word;
    }
    return "Serial ports: " + (text.empty() ? "none" : text) + "\n";
}

}  // namespace

bool isWell(const Diagnosis& diagnosis) {
    return diagnosis.library.faults.empty() && diagnosis.link.faults.empty();
}

std::string diagnosisText(const Diagnosis& diagnosis) {
    return reportText("KelUtils", diagnosis.library) +
           reportText("Instrument link " + diagnosis.linkName, diagnosis.link) +
           portsText(diagnosis.ports) +
           (isWell(diagnosis) ? "All is well.\n" : "Something is to be mended: see TO DO.\n");
}

}  // namespace kel::kelrun
