#include "hosts/kelregister/server_library.h"

#include "com/text.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/image_file.h"
#include "hosts/shared/model/failure.h"

namespace kel::kelregister {
namespace {

std::string reasonNotToLoad(const std::wstring& path, DWORD error) {
    const host::ImageFile file = host::readImageFile(path);
    if (!file.isThere) return "there is no such file";
    if (file.bits == 0) return "it is no library";
    if (file.bits == 64) {
        return "it is a 64-bit library, which 32-bit programs cannot load; kelregister is one, as "
               "are all programs that use KelUtils";
    }
    return host::systemText(error) + " (error " + std::to_string(error) + ")";
}

}  // namespace

ServerLibrary::ServerLibrary(const std::wstring& path) : name_(com::narrow(path, CP_UTF8)) {
    // The libraries that it needs itself may stand beside it.
    library_ = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library_) return;
    const DWORD error = GetLastError();
    throw host::Failure(host::ExitCode::kUsage,
                        name_ + " cannot be loaded: " + reasonNotToLoad(path, error));
}

void ServerLibrary::call(const char* function, const char* done) const {
    const FARPROC address = GetProcAddress(library_, function);
    if (!address) {
        throw host::Failure(host::ExitCode::kUsage,
                            name_ + " cannot be " + done +
                                ": it is no library of components (it has no " + function + ")");
    }
    const HRESULT code = reinterpret_cast<HRESULT(WINAPI*)()>(reinterpret_cast<void*>(address))();
    if (SUCCEEDED(code)) return;
    throw host::Failure(host::ExitCode::kFailed,
                        name_ + " could not be " + done + ": " + host::describe(com::Error(code)));
}

}  // namespace kel::kelregister
