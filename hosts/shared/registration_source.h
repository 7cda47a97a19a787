#pragma once
// The registry, the manifests and the files of this machine.

#include <windows.h>

#include <vector>

#include "hosts/shared/model/registration.h"

namespace kel::host {

// Reads below a key that holds classes, such as HKEY_CLASSES_ROOT. What cannot be read is missing.
ReadValue readerOf(HKEY classes);

// Of this user and this machine.
RegistrationSource registrationSource();

// What the components create of the link.
std::vector<LinkPart> linkParts();

}  // namespace kel::host
