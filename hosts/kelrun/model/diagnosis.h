#pragma once
// What --diagnose tells.

#include <string>
#include <vector>

#include "hosts/shared/model/registration.h"

namespace kel::kelrun {

struct PortState {
    std::string name;
    enum class Kind { kFree, kBusy, kAbsent } kind;
};

struct Diagnosis {
    host::RegistrationReport library;
    std::string linkName;
    host::RegistrationReport link;
    std::vector<PortState> ports;
};

// False when something is to be mended. Ports are no part of it: they come and go.
bool isWell(const Diagnosis& diagnosis);

// About ten lines when all is well, with what is wrong and what to do where it is not.
std::string diagnosisText(const Diagnosis& diagnosis);

}  // namespace kel::kelrun
