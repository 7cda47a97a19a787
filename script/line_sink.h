#pragma once
// How a finished command line reaches the instrument.

#include <functional>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::script {

// Sends one line on a link, calls `onWritten`, and pauses until the instrument can take the next.
// False when there is no port or the port did not take it. Throws when a call on the link fails.
bool sendLine(const com::ComPtr<IKelCommunicator>& communicator, BSTR text,
              const std::function<void()>& onWritten);

}  // namespace kel::script
