#include "tests/wine/support/library.h"

#include <stdexcept>

#include "com/text.h"

namespace kel::test {
namespace {

std::wstring fileOf(HMODULE module) {
    wchar_t path[1024];
    return std::wstring(path, GetModuleFileNameW(module, path, std::size(path)));
}

}  // namespace

Library::Library(const wchar_t* path) {
    // This program stands in <build>/tests/wine/<room>.
    const std::wstring program = fileOf(nullptr);
    const std::wstring folder = program.substr(0, program.rfind(L'\\'));
    module_ = LoadLibraryW((folder + L"\\..\\..\\..\\" + path).c_str());
    if (!module_) throw com::lastError();
    loaded().push_back(this);
}

std::wstring Library::path() const {
    return fileOf(module_);
}

void* exportOf(HMODULE module, const char* name) {
    const FARPROC function = GetProcAddress(module, name);
    if (!function) throw std::runtime_error(std::string("There is no export ") + name);
    return reinterpret_cast<void*>(function);
}

HRESULT Library::classObject(REFCLSID identifier, REFIID iid, void** result) const {
    return exportOf<HRESULT WINAPI(REFCLSID, REFIID, void**)>(module_, "DllGetClassObject")(
        identifier, iid, result);
}

HRESULT Library::canUnloadNow() const {
    return exportOf<HRESULT WINAPI()>(module_, "DllCanUnloadNow")();
}

std::vector<const Library*>& Library::loaded() {
    static std::vector<const Library*> libraries;
    return libraries;
}

const Library& kelUtils() {
    static const Library library(L"server\\KelUtils.dll");
    return library;
}

const Library& benchLink() {
    static const Library library(L"bench\\link\\BenchLink.dll");
    return library;
}

const Library& kelTrace() {
    static const Library library(L"hosts\\trace\\KelTrace.dll");
    return library;
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
