#include "hosts/shared/library_search.h"

#include <string>

#include "com/module.h"

namespace kel::host {

void leaveOutCurrentFolder() noexcept {
    SetDllDirectoryW(L"");
    SetSearchPathMode(BASE_SEARCH_PATH_ENABLE_SAFE_SEARCHMODE | BASE_SEARCH_PATH_PERMANENT);
}

HMODULE loadFromProgramFolder(const wchar_t* name) {
    const std::wstring program = com::modulePath();
    const std::wstring path = program.substr(0, program.rfind(L'\\') + 1) + name;
    // What the library itself needs is looked for in its folder, not in the current one.
    return LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

}  // namespace kel::host
