#pragma once
// Classes that a manifest makes known, without any registration.

#include <windows.h>

#include <objbase.h>

#include <memory>
#include <optional>
#include <string>

namespace kel::host {

// The classes, type libraries and interfaces of a manifest are the thread's own as long as it
// lives, before those of the registry. Ends on the thread on which it began, the last one first.
class ActivationContext {
public:
    // The libraries of the manifest stand in its folder. Throws com::Error.
    explicit ActivationContext(const std::wstring& manifest);
    ~ActivationContext();
    ActivationContext(const ActivationContext&) = delete;
    ActivationContext& operator=(const ActivationContext&) = delete;

private:
    HANDLE context_;
    ULONG_PTR cookie_ = 0;
};

// That of the library's manifest, where it stands in the folder of this program; else nothing.
// Throws Failure (not registered) when it cannot be used.
std::unique_ptr<ActivationContext> manifestBesideProgram();

// The manifest that makes a class known to this thread.
std::optional<std::wstring> manifestOf(REFCLSID identifier);

}  // namespace kel::host
