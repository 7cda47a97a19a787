#pragma once
// What this version of KelUtils registers.

#include "hosts/shared/model/registration.h"

namespace kel::host {

const RegisteredLibrary& kelUtilsLibrary();

}  // namespace kel::host
