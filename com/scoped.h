#pragma once
// A variable that has another value as long as a scope runs, such as a flag against re-entry.

#include <utility>

namespace kel::com {

template <class Value>
class Scoped {
public:
    Scoped(Value& place, Value value) : place_(place), before_(std::exchange(place, value)) {}
    ~Scoped() { place_ = before_; }
    Scoped(const Scoped&) = delete;
    Scoped& operator=(const Scoped&) = delete;

private:
    Value& place_;
    Value before_;
};

}  // namespace kel::com
