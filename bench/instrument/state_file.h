#pragma once

#include <string>

#include "bench/instrument/instrument_setup.h"

namespace kel::bench {

// The setup in the file; that from the factory when there is no such file. Throws CommandError
// for a file that holds anything else and std::system_error when it cannot be read.
InstrumentSetup loadSetup(const std::string& fileName);

// Replaces the file as a whole or leaves it as it was. False when it cannot be written.
bool storeSetup(const std::string& fileName, const InstrumentSetup& setup);

}  // namespace kel::bench
