#pragma once
// What the access objects that a link is attached to have in common.

#include "bench/link/access/quiet_port.h"
#include "com/object.h"
#include "com/scoped.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"

namespace kel::bench {

// `Interface` is the object's own; `Parts` are what com::Object takes.
template <class Derived, class Interface, class... Parts>
class AccessObject : public com::Object<Derived, Parts...> {
public:
    // A null link lets the present one go.
    STDMETHODIMP Attach(IKelCommunicator* link) override {
        return operation([&] { link_ = link; });
    }

protected:
    // The border of every member: the calls made here may run the host's message loop.
    template <class Body>
    HRESULT operation(Body&& body) noexcept {
        const com::KeepAlive alive(*this);
        return this->template guarded<Interface>(std::forward<Body>(body));
    }

    // A member that talks with the instrument, and tells by a boolean how it went.
    template <class Body>
    HRESULT dialogue(VARIANT_BOOL* result, Body&& body) noexcept {
        return operation([&] {
            com::out(result) = VARIANT_FALSE;
            try {
                exclusively([&] { *result = com::variantBool(body()); });
            } catch (const NoAnswer&) {
                // Said by the result.
            }
        });
    }

    // Refuses what comes, through the message loop, while the instrument is being talked with.
    template <class Body>
    void exclusively(Body&& body) {
        if (isTalking_) {
            throw com::Error(HRESULT_FROM_WIN32(ERROR_BUSY),
                             L"The instrument is being talked with");
        }
        const com::Scoped<bool> talking(isTalking_, true);
        body();
    }

    bool isTalking() const { return isTalking_; }

    const HomeThread& home() const { return home_; }

    com::ComPtr<IKelCommunicator> link() const {
        if (!link_) throw com::Error(E_FAIL, L"No link is attached");
        return link_;
    }

private:
    HomeThread home_;
    com::ComPtr<IKelCommunicator> link_;
    bool isTalking_ = false;
};

}  // namespace kel::bench
