#pragma once
// The connection that an application made last, made again and remembered without a window.

#include <string>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::connect {

// Throws com::Error with the reason when there is nothing to make again, or it is not made.
void connectAsLastTime(const com::ComPtr<IKelCommunicator>& link, const std::wstring& application);

// Remembers the link's open port as if the new session dialog had connected it. Throws com::Error
// when there is none.
void rememberConnection(const com::ComPtr<IKelCommunicator>& link, const std::wstring& application);

}  // namespace kel::connect
