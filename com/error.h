#pragma once
// Exceptions inside, HRESULT and error info outside.

#include <windows.h>

#include <oleauto.h>
#include <wrl/client.h>

#include <exception>
#include <string>
#include <type_traits>
#include <utility>

namespace Microsoft::WRL {

// By default two compare only whether there are objects: compare what Get() gives.
template <class First, class Second>
bool operator==(const ComPtr<First>&, const ComPtr<Second>&) = delete;

}  // namespace Microsoft::WRL

namespace kel::com {

using Microsoft::WRL::ComPtr;

// A failed COM operation: its code, the interface it failed on (GUID_NULL when it is the called
// interface itself) and a description (empty for the platform's own text).
class Error : public std::exception {
public:
    explicit Error(HRESULT code, std::wstring description = {}, const IID& interfaceId = GUID_NULL)
        : code_(code), description_(std::move(description)), interfaceId_(interfaceId) {}

    HRESULT code() const { return code_; }
    const std::wstring& description() const { return description_; }
    const IID& interfaceId() const { return interfaceId_; }
    const char* what() const noexcept override { return "COM operation failed"; }

private:
    HRESULT code_;
    std::wstring description_;
    IID interfaceId_;
};

// Throws the failure of a call on an object's interface, with the text that the object published.
[[noreturn]] void throwFailure(HRESULT code, IUnknown* object, const IID& interfaceId);

// Throws when a call on an object failed: check(stream->Echo(text), stream).
template <class Interface>
void check(HRESULT code, const ComPtr<Interface>& object) {
    if (FAILED(code)) throwFailure(code, object.Get(), __uuidof(Interface));
}

template <class Interface>
void check(HRESULT code, Interface* object) {
    if (FAILED(code)) throwFailure(code, object, __uuidof(Interface));
}

// Throws when a call failed on an object that publishes every failure of its own, with all that it
// published: the interface that it names is the one on which the failure struck.
void checkOwn(HRESULT code);

// Throws when a call on the platform failed.
inline void check(HRESULT code) {
    if (FAILED(code)) throw Error(code);
}

// The failure of a platform function, from the thread's last error.
[[nodiscard]] Error lastError();

// The result of an out parameter: throws E_POINTER when the caller gave none.
template <class Value>
Value& out(Value* result) {
    if (!result) throw Error(E_POINTER);
    return *result;
}

// What the exception that is being handled tells a user; the platform's text where it has none.
std::wstring textOfCurrentException();

// The HRESULT of the exception that is being handled.
HRESULT codeOfCurrentException() noexcept;

// Publishes the exception that is being handled as the thread's error info and gives its HRESULT.
// `source` is the ProgID of the component, may be null.
HRESULT publishCurrentException(const IID& interfaceId, const wchar_t* source) noexcept;

// Publishes a description for a failing HRESULT that is about to be returned, and returns it.
HRESULT publish(HRESULT code, const std::wstring& description, const IID& interfaceId,
                const wchar_t* source) noexcept;

// What a body gives: an HRESULT, or nothing for S_OK. It may throw.
template <class Body>
HRESULT resultOf(Body&& body) {
    if constexpr (std::is_void_v<std::invoke_result_t<Body>>) {
        body();
        return S_OK;
    } else {
        return body();
    }
}

// The one border between exceptions and HRESULTs: runs the body of an interface method or export.
template <class Body>
HRESULT guard(const IID& interfaceId, const wchar_t* source, Body&& body) noexcept {
    try {
        return resultOf(std::forward<Body>(body));
    } catch (...) {
        return publishCurrentException(interfaceId, source);
    }
}

// The same for late-bound calls, which tell their failures by themselves: nothing is published that
// a script host could mistake for the failure of a later call.
template <class Body>
HRESULT guardLateBound(Body&& body) noexcept {
    try {
        return resultOf(std::forward<Body>(body));
    } catch (...) {
        return codeOfCurrentException();
    }
}

}  // namespace kel::com
