#include "bench/link/registry_key.h"

#include "com/error.h"

namespace kel::bench {
namespace {

void check(LSTATUS status) {
    if (status != ERROR_SUCCESS) throw com::Error(HRESULT_FROM_WIN32(status));
}

}  // namespace

RegistryKey RegistryKey::create(const std::wstring& path) {
    HKEY key = nullptr;
    check(RegCreateKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key,
                          nullptr));
    return RegistryKey(key);
}

void RegistryKey::remove(const std::wstring& path) {
    const LSTATUS status = RegDeleteTreeW(HKEY_CLASSES_ROOT, path.c_str());
    if (status != ERROR_FILE_NOT_FOUND) check(status);
}

std::optional<std::wstring> RegistryKey::read(const std::wstring& path) {
    DWORD size = 0;
    LSTATUS status = RegGetValueW(HKEY_CLASSES_ROOT, path.c_str(), nullptr, RRF_RT_REG_SZ, nullptr,
                                  nullptr, &size);
    std::wstring text;
    while (status == ERROR_SUCCESS || status == ERROR_MORE_DATA) {
        text.resize(size / sizeof(wchar_t) + 1);
        size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        status = RegGetValueW(HKEY_CLASSES_ROOT, path.c_str(), nullptr, RRF_RT_REG_SZ, nullptr,
                              text.data(), &size);
        if (status == ERROR_SUCCESS) return std::wstring(text.c_str());
    }
    if (status == ERROR_FILE_NOT_FOUND) return std::nullopt;
    throw com::Error(HRESULT_FROM_WIN32(status));
}

void RegistryKey::set(const wchar_t* name, const std::wstring& text) {
    const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    check(RegSetValueExW(key_.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                         size));
}

}  // namespace kel::bench
