#pragma once
// Objects of other libraries, made by their class.

#include <windows.h>

#include <ole2.h>
#include <wrl/client.h>

namespace kel::com {

// Made in whatever kind of server, and started. Null where the class is not registered, cannot be
// made, or has no such interface.
template <class Interface>
Microsoft::WRL::ComPtr<Interface> createStarted(REFCLSID identifier) {
    Microsoft::WRL::ComPtr<IUnknown> object;
    Microsoft::WRL::ComPtr<Interface> started;
    if (SUCCEEDED(CoCreateInstance(identifier, nullptr, CLSCTX_ALL, IID_PPV_ARGS(&object))) &&
        SUCCEEDED(OleRun(object.Get()))) {
        object.As(&started);
    }
    return started;
}

}  // namespace kel::com
