#pragma once
// The script preprocessor, as the options want it.

#include <string>
#include <string_view>
#include <vector>

#include "com/error.h"
#include "hosts/kelrun/model/options.h"
#include "hosts/shared/model/diagnostic.h"
#include "interfaces/KelUtils.h"

namespace kel::kelrun {

// Texts are UTF-8. Every member throws com::Error.
class Preprocessor {
public:
    // `scriptFolder` is where scripts look for scripts unless the options say otherwise. Throws
    // Failure (not registered, a variable or answer that the code page cannot hold).
    Preprocessor(const Options& options, std::wstring_view scriptFolder);

    const com::ComPtr<IPreprocessorControl>& control() const { return control_; }

    // The script's name as the preprocessor tells it: in the user's code page.
    std::string scriptName() const;

    // What is wrong, or looks wrong, with a script.
    std::vector<Diagnostic> check(std::wstring_view script) const;

    // What went wrong in the last run.
    std::vector<Diagnostic> lastRun() const;

    // All variables, in the order of the preprocessor.
    std::vector<NamedText> variables() const;

private:
    com::ComPtr<IPreprocessorControl> control_;
    std::string script_;
};

}  // namespace kel::kelrun
