#include "tests/wine/link/link_library.h"

namespace kel::bench::test {
namespace {

HMODULE library() {
    static const HMODULE module = LoadLibraryW(libraryPath().c_str());
    return module;
}

template <class Function>
Function entryPoint(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library(), name)));
}

}  // namespace

std::wstring libraryPath() {
    wchar_t program[MAX_PATH];
    const std::wstring path(program, GetModuleFileNameW(nullptr, program, MAX_PATH));
    const std::wstring relative =
        path.substr(0, path.rfind(L'\\')) + L"\\..\\..\\..\\bench\\link\\BenchLink.dll";
    wchar_t full[MAX_PATH];
    return {full, GetFullPathNameW(relative.c_str(), MAX_PATH, full, nullptr)};
}

HRESULT callLibrary(const char* name) {
    const auto function = entryPoint<HRESULT(WINAPI*)()>(name);
    return function ? function() : E_NOTIMPL;
}

ComPtr<IUnknown> createObject(const CLSID& identifier) {
    using GetClassObject = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
    ComPtr<IClassFactory> factory;
    com::check(entryPoint<GetClassObject>("DllGetClassObject")(identifier, IID_PPV_ARGS(&factory)));
    ComPtr<IUnknown> object;
    com::check(factory->CreateInstance(nullptr, IID_PPV_ARGS(&object)));
    return object;
}

std::wstring publishedError() {
    ComPtr<IErrorInfo> info;
    Bstr description;
    if (GetErrorInfo(0, &info) == S_OK) info->GetDescription(description.put());
    return std::wstring(description.view());
}

}  // namespace kel::bench::test
