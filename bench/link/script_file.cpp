#include "bench/link/script_file.h"

#include <stdexcept>

#include "bench/link/input_file.h"
#include "com/text.h"
#include "com/text_file.h"

namespace kel::bench {
namespace {

constexpr wchar_t kKind[] = L"script";

}  // namespace

std::wstring readScriptFile(const std::wstring& path) {
    const std::string bytes = readFile(path, kKind);
    try {
        return com::decodeTextFile(bytes);
    } catch (const std::invalid_argument& reason) {
        refuseFile(ERROR_INVALID_DATA, path, kKind, L"it " + com::widen(reason.what()));
    }
}

}  // namespace kel::bench
