#include "server/registration.h"

#include <oleauto.h>

#include <string>

#include "com/error.h"
#include "com/module.h"
#include "interfaces/KelUtils.h"

namespace kel::server {
namespace {

constexpr WORD kMajorVersion = 1;
constexpr WORD kMinorVersion = 0;
constexpr LCID kLocale = 1033;

// Texts in a registry script stand in apostrophes; one inside a text is doubled.
std::wstring quoted(const std::wstring& path) {
    std::wstring text;
    for (const wchar_t character : path) {
        text += character;
        if (character == L'\'') text += character;
    }
    return text;
}

HRESULT updateClass(AtlModule& module, const com::ClassRow& row, bool add) {
    const std::wstring path = quoted(com::modulePath());
    const AtlReplacement replacements[] = {{L"MODULE", path.c_str()}, {nullptr, nullptr}};
    return AtlModuleUpdateRegistryFromResourceD(&module, MAKEINTRESOURCEW(row.registryScript), add,
                                                replacements, nullptr);
}

HRESULT registerTypeLibrary() {
    std::wstring path = com::modulePath();
    com::ComPtr<ITypeLib> library;
    com::check(LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library));
    return RegisterTypeLib(library.Get(), path.data(), nullptr);
}

bool typeLibraryIsRegistered() {
    BSTR path = nullptr;
    const HRESULT code =
        QueryPathOfRegTypeLib(LIBID_KELUTILSLib, kMajorVersion, kMinorVersion, kLocale, &path);
    SysFreeString(path);
    return SUCCEEDED(code);
}

HRESULT unregisterTypeLibrary() {
    if (!typeLibraryIsRegistered()) return S_OK;
    return UnRegisterTypeLib(LIBID_KELUTILSLib, kMajorVersion, kMinorVersion, kLocale, SYS_WIN32);
}

}  // namespace

HRESULT registerServer(AtlModule& module, std::span<const com::ClassRow> table) noexcept {
    return com::guard(GUID_NULL, nullptr, [&] {
        for (const com::ClassRow& row : table) {
            com::check(updateClass(module, row, true));
        }
        com::check(registerTypeLibrary());
    });
}

HRESULT unregisterServer(AtlModule& module, std::span<const com::ClassRow> table) noexcept {
    return com::guard(GUID_NULL, nullptr, [&] {
        HRESULT first = S_OK;
        const auto note = [&first](HRESULT code) {
            if (FAILED(code) && SUCCEEDED(first)) first = code;
        };
        for (const com::ClassRow& row : table) {
            note(updateClass(module, row, false));
        }
        note(unregisterTypeLibrary());
        return first;
    });
}

}  // namespace kel::server
