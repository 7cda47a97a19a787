#pragma once
// Which call is to fail.

#include <windows.h>

#include <optional>
#include <string>

namespace kel::trace {

class FailurePlan {
public:
    // The `count`-th call from now, of one method only when `method` is not empty: Sleep or
    // IKelStream.Sleep.
    void set(std::string method, long count, HRESULT result);
    void clear() { count_ = 0; }

    // Asked once for each call: the HRESULT with which it is to fail.
    std::optional<HRESULT> next(const std::string& interfaceName, const std::string& method);

private:
    std::string method_;
    long count_ = 0;
    HRESULT result_ = S_OK;
};

}  // namespace kel::trace
