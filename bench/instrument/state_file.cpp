#include "bench/instrument/state_file.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "bench/instrument/system_error.h"

namespace kel::bench {

InstrumentSetup loadSetup(const std::string& fileName) {
    std::ifstream file(fileName);
    if (!file) {
        if (!std::filesystem::exists(fileName)) return {};
        throwSystemError(fileName);
    }
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (file.bad()) throwSystemError(fileName);
    try {
        return InstrumentSetup::fromText(text);
    } catch (const CommandError& error) {
        throw CommandError(fileName + ", " + error.what());
    }
}

bool storeSetup(const std::string& fileName, const InstrumentSetup& setup) {
    const std::string newName = fileName + ".new";
    std::ofstream file(newName, std::ios::trunc);
    file << setup.toText();
    file.close();
    if (!file) return false;
    std::error_code error;
    std::filesystem::rename(newName, fileName, error);
    return !error;
}

}  // namespace kel::bench
