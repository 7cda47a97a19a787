#pragma once
// The library's new session dialog, as the hosts use it: what they connect with is remembered for
// each of them.

#include <string>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::host {

// For the link and under the name of an application, as UTF-8. Throws Failure (not registered),
// com::Error.
com::ComPtr<INewSessionDialog2> newSession(const com::ComPtr<IKelCommunicator>& link,
                                           const std::string& application);

// Makes the connection that the application made last, without a window. Throws Failure (no
// connection) with the reason.
void connectAsLastTime(const com::ComPtr<IKelCommunicator>& link, const std::string& application);

// Remembers the link's connection for the next time. Where the link or the settings refuse, the
// host works on. Throws Failure (not registered), com::Error.
void rememberConnection(const com::ComPtr<IKelCommunicator>& link, const std::string& application);

}  // namespace kel::host
