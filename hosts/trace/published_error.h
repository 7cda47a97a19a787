#pragma once
// Error info on its way through a traced call.

#include <windows.h>

#include <oleauto.h>

#include <optional>
#include <string>

#include "hosts/trace/invocation.h"
#include "hosts/trace/model/event.h"

namespace kel::trace {

// What the called object published with its failure; nothing when it does not vouch for it.
inline com::ComPtr<IErrorInfo> takeErrorInfo(HRESULT result, const Invocation& call) {
    com::ComPtr<IErrorInfo> info;
    com::ComPtr<ISupportErrorInfo> support;
    IUnknown* const object = call.object.innerObject();
    if (FAILED(result) && object && SUCCEEDED(object->QueryInterface(IID_PPV_ARGS(&support))) &&
        support->InterfaceSupportsErrorInfo(call.interfaceId) == S_OK) {
        GetErrorInfo(0, &info);
    }
    return info;
}

// Both throw com::Error.
PublishedError publishedError(IErrorInfo& info);
void publishAgain(HRESULT result, const std::optional<PublishedError>& error);

}  // namespace kel::trace
