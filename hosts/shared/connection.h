#pragma once
// The stream to the instrument, as the command line names it.

#include <utility>

#include "com/error.h"
#include "hosts/shared/model/target.h"
#include "interfaces/KelUtils.h"

namespace kel::host {

// Opens the port or connects. Without either the stream stays closed: errors of the script can be
// shown through it all the same. Throws Failure (no connection, not registered), com::Error.
com::ComPtr<IKelStream> openStream(const Target& target);

// Owns a stream and closes it.
class Connection {
public:
    explicit Connection(com::ComPtr<IKelStream> stream) : stream_(std::move(stream)) {}
    ~Connection() { stream_->Close(); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const com::ComPtr<IKelStream>& stream() const { return stream_; }

private:
    com::ComPtr<IKelStream> stream_;
};

}  // namespace kel::host
