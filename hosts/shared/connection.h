#pragma once
// The stream to the instrument, as the command line names it.

#include "com/error.h"
#include "hosts/shared/model/target.h"
#include "interfaces/KelUtils.h"

namespace kel::host {

// Owns the stream and closes it.
class Connection {
public:
    // Opens the port or connects. Without either the stream stays closed: errors of the script can
    // be shown through it all the same. Throws Failure (no connection, not registered), com::Error.
    explicit Connection(const Target& target);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const com::ComPtr<IKelStream>& stream() const { return stream_; }

private:
    com::ComPtr<IKelStream> stream_;
};

}  // namespace kel::host
