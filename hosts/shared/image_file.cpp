#include "hosts/shared/image_file.h"

#include <vector>

#include "com/handles.h"
#include "hosts/shared/model/image.h"

namespace kel::host {
namespace {

// The four numbers of the version resource; empty when there is none.
std::string versionOf(const std::wstring& path) {
    DWORD ignored = 0;
    std::vector<BYTE> block(GetFileVersionInfoSizeW(path.c_str(), &ignored));
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT size = 0;
    if (block.empty() ||
        !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) ||
        !VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &size) || !fixed) {
        return {};
    }
    std::string text;
    for (const DWORD pair : {fixed->dwFileVersionMS, fixed->dwFileVersionLS}) {
        if (!text.empty()) text += '.';
        text += std::to_string(HIWORD(pair)) + "." + std::to_string(LOWORD(pair));
    }
    return text;
}

}  // namespace

ImageFile readImageFile(const std::wstring& path) {
    ImageFile file;
    const com::FileHandle handle(CreateFileW(path.c_str(), GENERIC_READ,
                                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                             nullptr, OPEN_EXISTING, 0, nullptr));
    if (handle.get() == INVALID_HANDLE_VALUE) return file;
    file.isThere = true;
    std::string start(kImageStart, '\0');
    DWORD read = 0;
    if (!ReadFile(handle.get(), start.data(), static_cast<DWORD>(start.size()), &read, nullptr))
        read = 0;
    file.bits = imageBits(std::string_view(start).substr(0, read));
    file.version = versionOf(path);
    return file;
}

}  // namespace kel::host
