#include "hosts/kelregister/user_classes.h"

#include <oleauto.h>

#include <string>

#include "com/error.h"

// In every oleaut32.dll since Windows Vista, and in no header of the tool chain.
extern "C" void WINAPI OaEnablePerUserTLibRegistration(void);

namespace kel::kelregister {
namespace {

constexpr wchar_t kUserClasses[] = L"Software\\Classes";
constexpr const wchar_t* kRoots[] = {L"CLSID", L"Interface", L"TypeLib"};

void check(LSTATUS status) {
    if (status != ERROR_SUCCESS) throw com::Error(HRESULT_FROM_WIN32(static_cast<DWORD>(status)));
}

// Windows takes type libraries of a user only where the program asks for it; Wine takes them
// anyway, and its older versions end a program that asks.
bool isWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

bool isEmpty(HKEY parent, const wchar_t* name) {
    com::RegistryKeyHandle key;
    DWORD keys = 0, values = 0;
    return RegOpenKeyExW(parent, name, 0, KEY_READ, key.put()) == ERROR_SUCCESS &&
           RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                            nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
           keys == 0 && values == 0;
}

com::RegistryKeyHandle openUserClasses() {
    com::RegistryKeyHandle key;
    check(RegCreateKeyExW(HKEY_CURRENT_USER, kUserClasses, 0, nullptr, REG_OPTION_NON_VOLATILE,
                          KEY_ALL_ACCESS, nullptr, key.put(), nullptr));
    return key;
}

}  // namespace

UserClasses::UserClasses() : key_(openUserClasses()) {
    if (!isWine()) OaEnablePerUserTLibRegistration();
    check(RegOverridePredefKey(HKEY_CLASSES_ROOT, key_.get()));
}

UserClasses::~UserClasses() {
    RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
}

void UserClasses::removeEmptyRoots() const {
    for (const wchar_t* root : kRoots)
        if (isEmpty(key_.get(), root)) RegDeleteKeyW(key_.get(), root);
}

bool systemReadsUserClasses() {
    const std::wstring probe = L"KelUtils.Probe." + std::to_wstring(GetCurrentProcessId());
    const com::RegistryKeyHandle classes = openUserClasses();
    com::RegistryKeyHandle written, seen;
    check(RegCreateKeyExW(classes.get(), probe.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                          KEY_ALL_ACCESS, nullptr, written.put(), nullptr));
    const LSTATUS status = RegOpenKeyExW(HKEY_CLASSES_ROOT, probe.c_str(), 0, KEY_READ, seen.put());
    RegDeleteKeyW(classes.get(), probe.c_str());
    return status == ERROR_SUCCESS;
}

}  // namespace kel::kelregister
