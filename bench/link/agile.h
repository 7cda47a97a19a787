#pragma once
// Objects that any thread may use.

#include <utility>

#include "com/object.h"

namespace kel::bench {

// An object of a class that is safe to read on several threads: passed to another thread it is used
// there directly.
template <class Class>
class Agile final : public com::Object<Agile<Class>> {
public:
    static constexpr com::ClassDescription kClass{};

    // A reference to a new one. Throws.
    template <class Interface, class... Arguments>
    static com::ComPtr<Interface> make(Arguments&&... arguments) {
        Agile* made = nullptr;
        const com::ComPtr<IUnknown> owner = com::createObject<Agile>(nullptr, &made);
        made->object_ = com::createObject<Class>(made->controlling(), nullptr,
                                                 std::forward<Arguments>(arguments)...);
        com::ComPtr<Interface> result;
        com::check(owner.As(&result));
        return result;
    }

    // The instance creator of a class table row.
    static HRESULT create(IUnknown* outer, REFIID iid, void** result) noexcept {
        return com::guard(iid, nullptr, [&] {
            Agile* made = nullptr;
            const com::ComPtr<IUnknown> owner = com::createObject<Agile>(outer, &made);
            made->object_ = com::createObject<Class>(made->controlling(), nullptr);
            return owner->QueryInterface(iid, result);
        });
    }

protected:
    void* findInterface(REFIID iid) override {
        return iid == IID_IAgileObject ? this->inner() : nullptr;
    }

    HRESULT findElsewhere(REFIID iid, void** result) override {
        if (iid != IID_IMarshal)
            return object_ ? object_->QueryInterface(iid, result) : E_NOINTERFACE;
        com::ComPtr<IUnknown> marshaler;
        const HRESULT code = CoCreateFreeThreadedMarshaler(nullptr, &marshaler);
        return FAILED(code) ? code : marshaler->QueryInterface(iid, result);
    }

private:
    com::ComPtr<IUnknown> object_;
};

}  // namespace kel::bench
