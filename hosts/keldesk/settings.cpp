#include "hosts/keldesk/settings.h"

#include "com/handles.h"
#include "com/text.h"

namespace kel::keldesk {
namespace {

constexpr wchar_t kKey[] = L"Software\\KelDesk";
constexpr wchar_t kRecent[] = L"RecentScripts";
constexpr wchar_t kLook[] = L"Terminal";

std::string read(const wchar_t* name, DWORD kind) {
    DWORD size = 0;
    if (RegGetValueW(HKEY_CURRENT_USER, kKey, name, kind, nullptr, nullptr, &size) != ERROR_SUCCESS)
        return {};
    std::string bytes(size, '\0');
    if (RegGetValueW(HKEY_CURRENT_USER, kKey, name, kind, nullptr, bytes.data(), &size) !=
        ERROR_SUCCESS) {
        return {};
    }
    bytes.resize(size);
    return bytes;
}

std::wstring readText(const wchar_t* name, DWORD kind) {
    const std::string bytes = read(name, kind);
    return {reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / sizeof(wchar_t)};
}

void write(const wchar_t* name, DWORD kind, const void* bytes, std::size_t size) {
    com::RegistryKeyHandle key;
    LSTATUS status = RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr,
                                     key.put(), nullptr);
    if (status == ERROR_SUCCESS) {
        status = RegSetValueExW(key.get(), name, 0, kind, static_cast<const BYTE*>(bytes),
                                static_cast<DWORD>(size));
    }
    com::check(HRESULT_FROM_WIN32(static_cast<DWORD>(status)));
}

}  // namespace

std::vector<std::wstring> readRecentScripts() {
    const std::wstring all = readText(kRecent, RRF_RT_REG_MULTI_SZ);
    std::vector<std::wstring> paths;
    for (std::size_t begin = 0; begin < all.size();) {
        const std::wstring path(all.c_str() + begin);
        begin += path.size() + 1;
        if (!path.empty()) paths.push_back(path);
    }
    return paths;
}

void writeRecentScripts(const std::vector<std::wstring>& paths) {
    std::wstring all;
    for (const std::wstring& path : paths)
        all.append(path).push_back(L'\0');
    all.push_back(L'\0');
    write(kRecent, REG_MULTI_SZ, all.data(), all.size() * sizeof(wchar_t));
}

std::string readLook() {
    return read(kLook, RRF_RT_REG_BINARY);
}

void writeLook(const std::string& look) {
    write(kLook, REG_BINARY, look.data(), look.size());
}

}  // namespace kel::keldesk
