#pragma once
// What KelUtils uses of the platform's ATL.DLL. The tool chain has no header for it.

#include <windows.h>

namespace kel::server {

// The state that ATL.DLL keeps for a module. It reads the size first and accepts this one; the
// fields after the lock count are its own.
struct AtlModule {
    UINT size = sizeof(AtlModule);
    HINSTANCE instance = nullptr;
    HINSTANCE resourceInstance = nullptr;
    HINSTANCE typeLibraryInstance = nullptr;
    void* objectMap = nullptr;
    LONG lockCount = 0;
    BYTE internal[108] = {};
};
static_assert(sizeof(AtlModule) == 132, "ATL.DLL knows the module state by its size");

// One replacement in a registry script: %name% becomes the value. A list ends with a null name.
struct AtlReplacement {
    const wchar_t* name;
    const wchar_t* value;
};

extern "C" {
HRESULT WINAPI AtlModuleInit(AtlModule* module, void* objectMap, HINSTANCE instance);
HRESULT WINAPI AtlModuleTerm(AtlModule* module);
HRESULT WINAPI AtlModuleUpdateRegistryFromResourceD(AtlModule* module, const wchar_t* resource,
                                                    BOOL registerClass,
                                                    const AtlReplacement* replacements,
                                                    IUnknown* registrar);
}

}  // namespace kel::server
