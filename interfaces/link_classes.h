#pragma once
// Class identifiers of the instrument-link library's components that KelUtils creates itself.

#include <windows.h>

namespace kel::link {

// A closed serial stream (ISerialStream).
inline constexpr CLSID kSerialStreamClass = {
    0x50AEA896, 0xD75C, 0x4B50, {0x83, 0xE5, 0x4F, 0xD1, 0xCD, 0x14, 0xED, 0xEF}};

// An unconnected network stream (INetworkStream).
inline constexpr CLSID kNetworkStreamClass = {
    0x8C1E8A0D, 0x3F42, 0x4E6B, {0x9B, 0x57, 0x6A, 0x0C, 0x2D, 0x91, 0x7E, 0x34}};

// An empty general collection (ICollection).
inline constexpr CLSID kCollectionClass = {
    0x06BF9A2F, 0xAE7F, 0x44A7, {0x80, 0x4B, 0xE5, 0x5A, 0xEE, 0xFF, 0x37, 0x64}};

}  // namespace kel::link
