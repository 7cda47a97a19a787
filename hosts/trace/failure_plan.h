#pragma once
// Which call is to fail.

#include <windows.h>

#include <mutex>
#include <optional>
#include <string>

namespace kel::trace {

// Any thread.
class FailurePlan {
public:
    // The `count`-th call from now, of one method only when `method` is not empty: Sleep or
    // IKelStream.Sleep.
    void set(std::string method, long count, HRESULT result);
    void clear();

    // Asked once for each call: the HRESULT with which it is to fail.
    std::optional<HRESULT> next(const std::string& interfaceName, const std::string& method);

private:
    std::mutex mutex_;
    std::string method_;
    long count_ = 0;
    HRESULT result_ = S_OK;
};

}  // namespace kel::trace
