#pragma once
// Ownership of the platform's handles.

#include <utility>

namespace kel::com {

// Traits tell the type of the handle, the value that stands for none, and how one is closed:
//     struct Traits {
//         using Type = HKEY;
//         static Type none();
//         static void close(Type handle);
//     };
template <class Traits>
class UniqueHandle {
public:
    using Type = typename Traits::Type;

    UniqueHandle() = default;
    explicit UniqueHandle(Type handle) : handle_(handle) {}
    UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.release()) {}
    UniqueHandle& operator=(UniqueHandle other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~UniqueHandle() {
        if (*this) Traits::close(handle_);
    }

    Type get() const { return handle_; }
    explicit operator bool() const { return handle_ != Traits::none(); }

    // Closes what is held and gives the place for an out parameter.
    Type* put() {
        *this = UniqueHandle();
        return &handle_;
    }

    // Hands the handle to the caller, who closes it.
    [[nodiscard]] Type release() noexcept { return std::exchange(handle_, Traits::none()); }

private:
    Type handle_ = Traits::none();
};

}  // namespace kel::com
