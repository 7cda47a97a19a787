#include "com/error.h"

#include <cwchar>
#include <new>
#include <stdexcept>

#include "com/text.h"

namespace kel::com {
namespace {

struct Published {
    std::wstring description;
    IID interfaceId = GUID_NULL;
};

// Takes what the last failing call published; empty when it published nothing.
Published takePublished() {
    Published published;
    ComPtr<IErrorInfo> info;
    if (GetErrorInfo(0, &info) != S_OK) return published;
    Bstr description;
    if (SUCCEEDED(info->GetDescription(description.put()))) {
        published.description = description.view();
    }
    if (FAILED(info->GetGUID(&published.interfaceId))) published.interfaceId = GUID_NULL;
    return published;
}

// A component that does not vouch for an interface may have left an older text standing.
bool vouchesFor(IUnknown* object, const IID& interfaceId) {
    ComPtr<ISupportErrorInfo> support;
    if (!object || FAILED(object->QueryInterface(IID_PPV_ARGS(&support)))) return false;
    return support->InterfaceSupportsErrorInfo(interfaceId) == S_OK;
}

// The platform's own text of a code, without the line end it adds; the bare code when it has none.
template <DWORD size>
void describe(HRESULT code, wchar_t (&text)[size]) {
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, static_cast<DWORD>(code), 0, text, size, nullptr);
    while (length > 0 && (text[length - 1] == L'\r' || text[length - 1] == L'\n')) {
        text[--length] = L'\0';
    }
    if (length == 0) std::swprintf(text, size, L"The call failed with code 0x%08lX", code);
}

}  // namespace

void throwFailure(HRESULT code, IUnknown* object, const IID& interfaceId) {
    const bool isPublished = vouchesFor(object, interfaceId);
    throw Error(code, isPublished ? takePublished().description : std::wstring(), interfaceId);
}

void checkOwn(HRESULT code) {
    if (SUCCEEDED(code)) return;
    Published published = takePublished();
    throw Error(code, std::move(published.description), published.interfaceId);
}

Error lastError() {
    const DWORD error = GetLastError();
    return Error(error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error));
}

std::wstring textOfCurrentException() {
    publishCurrentException(GUID_NULL, nullptr);
    return takePublished().description;
}

HRESULT codeOfCurrentException() noexcept {
    try {
        throw;
    } catch (const Error& error) {
        return error.code();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::length_error&) {
        return E_OUTOFMEMORY;
    } catch (const std::exception&) {
        return E_FAIL;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

HRESULT publish(HRESULT code, const std::wstring& description, const IID& interfaceId,
                const wchar_t* source) noexcept {
    // A failure to publish must not hide the failure itself: the code goes out without a text.
    ComPtr<ICreateErrorInfo> creator;
    ComPtr<IErrorInfo> info;
    if (FAILED(CreateErrorInfo(&creator)) || FAILED(creator.As(&info))) {
        SetErrorInfo(0, nullptr);
        return code;
    }
    creator->SetGUID(interfaceId);
    if (source) creator->SetSource(const_cast<wchar_t*>(source));
    if (description.empty()) {
        wchar_t platformText[512];
        describe(code, platformText);
        creator->SetDescription(platformText);
    } else {
        creator->SetDescription(const_cast<wchar_t*>(description.c_str()));
    }
    SetErrorInfo(0, info.Get());
    return code;
}

HRESULT publishCurrentException(const IID& interfaceId, const wchar_t* source) noexcept {
    try {
        throw;
    } catch (const Error& error) {
        const bool elsewhere = error.interfaceId() != GUID_NULL;
        return publish(error.code(), error.description(),
                       elsewhere ? error.interfaceId() : interfaceId, source);
    } catch (const std::exception& failure) {
        const HRESULT code = codeOfCurrentException();
        if (code == E_OUTOFMEMORY) return publish(code, {}, interfaceId, source);
        try {
            return publish(code, widen(failure.what()), interfaceId, source);
        } catch (...) {
            return publish(code, {}, interfaceId, source);
        }
    } catch (...) {
        return publish(E_UNEXPECTED, {}, interfaceId, source);
    }
}

}  // namespace kel::com
