#include "hosts/shared/library_search.h"

#include <string>

#include "hosts/shared/program_folder.h"

namespace kel::host {
namespace {

constexpr DWORD kDefaultFolders = 0x1000;  // the program's, the system's, and those that are added

// Null on systems that lack it.
template <class Function>
Function* systemFunction(const char* name) {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name)));
}

std::wstring searchedFolders() {
    std::wstring folders(GetEnvironmentVariableW(L"PATH", nullptr, 0), L'\0');
    folders.resize(
        GetEnvironmentVariableW(L"PATH", folders.data(), static_cast<DWORD>(folders.size())));
    return folders;
}

}  // namespace

void leaveOutCurrentFolder() noexcept {
    // All that can be done before Windows 8 without its updates.
    SetDllDirectoryW(L"");
    const auto setFolders = systemFunction<BOOL WINAPI(DWORD)>("SetDefaultDllDirectories");
    const auto addFolder = systemFunction<void * WINAPI(const wchar_t*)>("AddDllDirectory");
    if (!setFolders || !addFolder || !setFolders(kDefaultFolders)) return;
    // A folder without its full path, which would be one below the current folder, is refused.
    std::wstring rest = searchedFolders() + L';';
    for (std::size_t end; (end = rest.find(L';')) != std::wstring::npos; rest.erase(0, end + 1))
        addFolder(rest.substr(0, end).c_str());
}

HMODULE loadFromProgramFolder(const wchar_t* name) {
    const std::wstring path = programFolder() + name;
    // What the library itself needs is looked for in its folder, not in the current one.
    return LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

}  // namespace kel::host
