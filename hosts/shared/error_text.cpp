#include "hosts/shared/error_text.h"

#include <cstdio>
#include <iterator>

#include "com/text.h"

namespace kel::host {

std::string systemText(DWORD code) {
    wchar_t text[512];
    const DWORD size = FormatMessageW(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
        nullptr, code, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    std::string line = com::narrow(std::wstring_view(text, size), CP_UTF8);
    while (line.ends_with(' ') || line.ends_with('.'))
        line.pop_back();
    return line;
}

std::string codeText(HRESULT code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08lX", static_cast<unsigned long>(code));
    return text;
}

std::string interfaceName(const IID& identifier) {
    const std::wstring text = com::guidText(identifier);
    wchar_t name[128];
    DWORD size = sizeof name;
    const std::wstring key = L"Interface\\" + text;
    const bool isKnown = RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ,
                                      nullptr, name, &size) == ERROR_SUCCESS &&
                         name[0] != L'\0';
    return com::narrow(isKnown ? std::wstring(name) : text, CP_UTF8);
}

std::string describe(const com::Error& error) {
    std::string text = com::narrow(error.description(), CP_UTF8);
    if (text.empty()) text = systemText(static_cast<DWORD>(error.code()));
    if (text.empty()) text = "a component failed";
    text += " (";
    if (error.interfaceId() != GUID_NULL) text += interfaceName(error.interfaceId()) + ", ";
    return text + codeText(error.code()) + ")";
}

}  // namespace kel::host
