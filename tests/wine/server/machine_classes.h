#pragma once
// The registration of the library, where it harms nobody.

#include <gtest/gtest.h>

#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"

namespace kel::test {

// Has the classes of the machine for itself, with the roots that are everybody's.
class MachineClasses : public testing::Test {
protected:
    MachineClasses() {
        for (const wchar_t* name : {L"CLSID", L"Interface", L"TypeLib"}) {
            com::RegistryKeyHandle key;
            EXPECT_EQ(RegCreateKeyW(classes_.key(), name, key.put()), ERROR_SUCCESS);
        }
    }

    static HRESULT registerServer(HMODULE library = kelUtils().module()) {
        return exportOf<HRESULT WINAPI()>(library, "DllRegisterServer")();
    }
    static HRESULT unregisterServer(HMODULE library = kelUtils().module()) {
        return exportOf<HRESULT WINAPI()>(library, "DllUnregisterServer")();
    }

    RegistrySandbox classes_{HKEY_CLASSES_ROOT};
};

}  // namespace kel::test
