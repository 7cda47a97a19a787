#include "tests/wine/support/kel_utils.h"

#include <sstream>
#include <stdexcept>

#include "com/text.h"

namespace kel::test {
namespace {

std::wstring fileOf(HMODULE module) {
    wchar_t path[1024];
    return std::wstring(path, GetModuleFileNameW(module, path, std::size(path)));
}

}  // namespace

HMODULE kelUtils() {
    static const HMODULE library = [] {
        // This program stands in <build>/tests/wine/<room>.
        const std::wstring program = fileOf(nullptr);
        const std::wstring folder = program.substr(0, program.rfind(L'\\'));
        const std::wstring path = folder + L"\\..\\..\\..\\server\\KelUtils.dll";
        const HMODULE loaded = LoadLibraryW(path.c_str());
        if (!loaded) throw com::lastError();
        return loaded;
    }();
    return library;
}

std::wstring kelUtilsPath() {
    return fileOf(kelUtils());
}

void* exportOf(HMODULE library, const char* name) {
    const FARPROC function = GetProcAddress(library, name);
    if (!function) throw std::runtime_error(std::string("There is no export ") + name);
    return reinterpret_cast<void*>(function);
}

HRESULT classObject(REFCLSID identifier, REFIID iid, void** result) {
    return exportOf<HRESULT WINAPI(REFCLSID, REFIID, void**)>(kelUtils(), "DllGetClassObject")(
        identifier, iid, result);
}

HRESULT canUnloadNow() {
    return exportOf<HRESULT WINAPI()>(kelUtils(), "DllCanUnloadNow")();
}

std::vector<std::string> resourceLines(const wchar_t* name) {
    const HRSRC resource = FindResourceW(nullptr, name, MAKEINTRESOURCEW(10));
    if (!resource) throw com::lastError();
    const auto* bytes = static_cast<const char*>(LockResource(LoadResource(nullptr, resource)));
    std::istringstream text(std::string(bytes, SizeofResource(nullptr, resource)));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

std::optional<PublishedError> takeError() {
    com::ComPtr<IErrorInfo> info;
    if (GetErrorInfo(0, &info) != S_OK) return std::nullopt;
    com::Bstr description;
    com::Bstr source;
    PublishedError error;
    com::check(info->GetDescription(description.put()));
    com::check(info->GetSource(source.put()));
    com::check(info->GetGUID(&error.interfaceId));
    error.description = description.view();
    error.source = source.view();
    return error;
}

}  // namespace kel::test
