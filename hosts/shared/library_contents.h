#pragma once
// What this version of KelUtils registers, and what its components create of the link.

#include <vector>

#include "hosts/shared/model/registration.h"

namespace kel::host {

const RegisteredLibrary& kelUtilsLibrary();

std::vector<LinkPart> linkParts();

}  // namespace kel::host
