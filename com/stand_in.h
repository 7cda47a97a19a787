#pragma once
// Objects that stand for others.

#include <windows.h>

#include <oleauto.h>
#include <wrl/client.h>

namespace kel::com {

// Asked from an argument by its identifier: what the argument is meant to be. An interface that an
// object gives of another one is no argument: who converts it releases the wrong one, at times.
struct IStandIn : IUnknown {
    // Null where it stands for nothing any more. Throws Error.
    virtual Microsoft::WRL::ComPtr<IDispatch> standsFor() = 0;
};

}  // namespace kel::com

__CRT_UUID_DECL(kel::com::IStandIn, 0x2A6C0B7D, 0x4E0F, 0x4C5B, 0xA1, 0x3C, 0x7F, 0x52, 0x90, 0xE6,
                0x1D, 0x84)
