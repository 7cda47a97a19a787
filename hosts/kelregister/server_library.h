#pragma once
// A library that registers its components itself.

#include <windows.h>

#include <string>

namespace kel::kelregister {

class ServerLibrary {
public:
    // Loads it. Throws host::Failure (usage) when it is no library that this program can load.
    explicit ServerLibrary(const std::wstring& path);
    ~ServerLibrary() { FreeLibrary(library_); }
    ServerLibrary(const ServerLibrary&) = delete;
    ServerLibrary& operator=(const ServerLibrary&) = delete;

    // Calls DllRegisterServer or DllUnregisterServer. Throws host::Failure: usage when it has no
    // such function, failed when that fails.
    void registerClasses() const { call("DllRegisterServer", "registered"); }
    void unregisterClasses() const { call("DllUnregisterServer", "unregistered"); }

private:
    void call(const char* function, const char* done) const;

    std::string name_;
    HMODULE library_;
};

}  // namespace kel::kelregister
