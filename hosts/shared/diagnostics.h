#pragma once
// What a preprocessor tells about scripts, read from its collections.

#include <vector>

#include "com/error.h"
#include "hosts/shared/model/diagnostic.h"
#include "hosts/shared/model/named_text.h"
#include "interfaces/KelUtils.h"

namespace kel::host {

// Both throw com::Error. Texts become UTF-8.
std::vector<Diagnostic> readDiagnostics(const com::ComPtr<IScriptDiagnostics>& source);

// All variables, in the order of the preprocessor.
std::vector<NamedText> readVariables(const com::ComPtr<IPreprocessorControl>& preprocessor);

}  // namespace kel::host
