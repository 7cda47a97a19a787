#include "hosts/trace/failure_plan.h"

#include <utility>

namespace kel::trace {

void FailurePlan::set(std::string method, long count, HRESULT result) {
    const std::lock_guard lock(mutex_);
    method_ = std::move(method);
    count_ = count;
    result_ = result;
}

void FailurePlan::clear() {
    const std::lock_guard lock(mutex_);
    count_ = 0;
}

std::optional<HRESULT> FailurePlan::next(const std::string& interfaceName,
                                         const std::string& method) {
    const std::lock_guard lock(mutex_);
    const bool isMeant =
        method_.empty() || method_ == method || method_ == interfaceName + "." + method;
    if (count_ == 0 || !isMeant || --count_ > 0) return std::nullopt;
    return result_;
}

}  // namespace kel::trace
