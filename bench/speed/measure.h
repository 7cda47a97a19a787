#pragma once
// What the measurements through COM share: the registered objects, a connection, how figures are
// printed.

#include <winsock2.h>

#include <cstdio>
#include <string_view>
#include <vector>

#include "com/error.h"
#include "com/text.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"
#include "interfaces/link_classes.h"

namespace kel::bench {

// An object of a registered class, by its program identifier. Throws com::Error.
template <class Interface>
com::ComPtr<Interface> create(const wchar_t* programIdentifier) {
    CLSID identifier;
    com::check(CLSIDFromProgID(programIdentifier, &identifier));
    com::ComPtr<Interface> object;
    com::check(CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object)));
    return object;
}

// A stream of the link that is connected to a port of this machine. Throws com::Error.
inline com::ComPtr<INetworkStream> connectTo(std::wstring_view port) {
    com::ComPtr<INetworkStream> stream;
    com::check(CoCreateInstance(link::kNetworkStreamClass, nullptr, CLSCTX_INPROC_SERVER,
                                IID_PPV_ARGS(&stream)));
    VARIANT_BOOL isOpen = VARIANT_FALSE;
    com::check(stream->ConnectTo(com::Bstr(L"127.0.0.1").get(), com::Bstr(port).get(), &isOpen),
               stream);
    if (!com::isTrue(isOpen)) throw com::Error(E_FAIL, L"no connection");
    return stream;
}

// A figure in a line: its name, and the value of each round.
inline void print(const char* name, const std::vector<double>& values) {
    std::printf("%s", name);
    for (const double value : values)
        std::printf(" %.3f", value);
    std::printf("\n");
    std::fflush(stdout);
}

}  // namespace kel::bench
