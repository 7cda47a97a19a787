#pragma once
// The module: its instance handle, its count of outstanding objects and locks, and its type
// library.

#include <windows.h>

#include <oleauto.h>
#include <wrl/client.h>

#include <string>

namespace kel::com {

// Records the module's handle. Called once, when the process attaches the module.
void attachModule(HINSTANCE instance);

// Releases what is cached. Called when the process detaches the module and goes on running.
void detachModule();

HINSTANCE moduleInstance();

// Full path of the module's file.
std::wstring modulePath();

// Live objects and factory locks. Interlocked; any thread.
void lockModule();
void unlockModule();
LONG moduleLocks();

// The module's embedded type library (resource TYPELIB 1), loaded once. Throws. Any thread.
Microsoft::WRL::ComPtr<ITypeLib> typeLibrary();

// Type information of an interface or class of the type library, loaded once. Throws. Any thread.
Microsoft::WRL::ComPtr<ITypeInfo> typeInfo(const GUID& identifier);

}  // namespace kel::com
