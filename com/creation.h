#pragma once
// Objects of other libraries, made by their class.

#include <windows.h>

#include <ole2.h>
#include <wrl/client.h>

namespace kel::com {

// Made in whatever kind of server, and started. Fails with the platform's reason.
template <class Interface>
HRESULT createStarted(REFCLSID identifier, Microsoft::WRL::ComPtr<Interface>& started) {
    Microsoft::WRL::ComPtr<IUnknown> object;
    HRESULT code = CoCreateInstance(identifier, nullptr, CLSCTX_ALL, IID_PPV_ARGS(&object));
    if (SUCCEEDED(code)) code = OleRun(object.Get());
    if (SUCCEEDED(code)) code = object.As(&started);
    return code;
}

// The same. Null where the class is not registered, cannot be made, or has no such interface.
template <class Interface>
Microsoft::WRL::ComPtr<Interface> createStarted(REFCLSID identifier) {
    Microsoft::WRL::ComPtr<Interface> started;
    createStarted(identifier, started);
    return started;
}

}  // namespace kel::com
