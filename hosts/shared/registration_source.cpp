#include "hosts/shared/registration_source.h"

#include <memory>

#include "com/handles.h"
#include "com/text.h"
#include "hosts/shared/activation_context.h"
#include "hosts/shared/image_file.h"
#include "interfaces/link_classes.h"

namespace kel::host {
namespace {

constexpr wchar_t kClasses[] = L"Software\\Classes";
constexpr std::size_t kLongestPath = 0x8000;

std::optional<std::string> readValue(HKEY classes, const std::string& key,
                                     const std::string& name) {
    com::RegistryKeyHandle opened;
    if (RegOpenKeyExW(classes, com::widen(key, CP_UTF8).c_str(), 0, KEY_QUERY_VALUE,
                      opened.put()) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    std::wstring text(kLongestPath, L'\0');
    auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    const LSTATUS status = RegGetValueW(opened.get(), nullptr, com::widen(name, CP_UTF8).c_str(),
                                        RRF_RT_REG_SZ, nullptr, text.data(), &size);
    if (status == ERROR_SUCCESS) return com::narrow(std::wstring_view(text.c_str()), CP_UTF8);
    // The key alone; a value of another kind than text is none of registration's.
    return name.empty() ? std::optional<std::string>("") : std::nullopt;
}

ReadValue readerBelow(HKEY root) {
    const auto classes = std::make_shared<com::RegistryKeyHandle>();
    if (RegOpenKeyExW(root, kClasses, 0, KEY_READ, classes->put()) != ERROR_SUCCESS) {
        return [](const std::string&, const std::string&) { return std::nullopt; };
    }
    return [classes](const std::string& key, const std::string& name) {
        return readValue(classes->get(), key, name);
    };
}

// A name without a folder is found where the system looks for libraries.
std::wstring whole(const std::string& name) {
    const std::wstring given = com::widen(name, CP_UTF8);
    wchar_t path[MAX_PATH];
    if (given.find(L'\\') != std::wstring::npos) return given;
    const DWORD size = SearchPathW(nullptr, given.c_str(), L".dll", MAX_PATH, path, nullptr);
    return size == 0 || size >= MAX_PATH ? given : std::wstring(path, size);
}

std::string toText(const GUID& identifier) {
    return com::narrow(com::guidText(identifier));
}

}  // namespace

ReadValue readerOf(HKEY classes) {
    return [classes](const std::string& key, const std::string& name) {
        return readValue(classes, key, name);
    };
}

RegistrationSource registrationSource() {
    RegistrationSource source;
    source.user = readerBelow(HKEY_CURRENT_USER);
    source.machine = readerBelow(HKEY_LOCAL_MACHINE);
    source.file = [](const std::string& path) { return readImageFile(whole(path)); };
    source.manifest = [](const std::string& identifier) -> std::optional<std::string> {
        CLSID parsed;
        if (FAILED(CLSIDFromString(com::widen(identifier).c_str(), &parsed))) return std::nullopt;
        const auto path = manifestOf(parsed);
        if (!path) return std::nullopt;
        return com::narrow(std::wstring_view(*path), CP_UTF8);
    };
    return source;
}

std::vector<LinkPart> linkParts() {
    return {
        {"serial stream", toText(link::kSerialStreamClass), nullptr},
        {"network stream", toText(link::kNetworkStreamClass), nullptr},
        {"collection", toText(link::kCollectionClass), nullptr},
        {"firmware uploader", toText(link::kFirmwareUploaderClass), "UploadFirmwareDialog"},
        {"pressure access", toText(link::kPressureAccessClass), "PressureOffsetDialog"},
        {"compass access", toText(link::kCompassAccessClass), "CompassCalibDialog"},
    };
}

}  // namespace kel::host
