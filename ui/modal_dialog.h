#pragma once
// The contract of every modal dialog component, IKelModalDialog, for all of them at once.

#include "com/object.h"
#include "com/scoped.h"
#include "com/variant.h"
#include "ui/dialog.h"

namespace kel::ui {

// A component derives from it with its own interface, and those between that and IKelModalDialog,
// and has a method
//     bool show(HWND owner, const com::ComPtr<IKelCommunicator>& link);
// that runs the dialog and tells whether it ended with success. It may throw.
template <class Derived, class Interface, class... Bases>
class ModalDialog : public com::Object<Derived, com::Dual<Interface, Bases..., IKelModalDialog>> {
public:
    STDMETHODIMP put_Communicator(IKelCommunicator* communicator) override {
        return this->template guarded<IKelModalDialog>([&] { communicator_ = communicator; });
    }

    STDMETHODIMP ShowModal(long owner, VARIANT_BOOL* result) override {
        return this->template guarded<IKelModalDialog>([&] {
            com::out(result) = VARIANT_FALSE;
            if (!communicator_) throw com::Error(E_INVALIDARG, L"The dialog has no communicator");
            if (isRunning_) return;
            const com::KeepAlive alive(*this);
            const com::Scoped running(isRunning_, true);
            // A host may put another one meanwhile: that is for the next time.
            const com::ComPtr<IKelCommunicator> link = communicator_;
            *result =
                com::variantBool(static_cast<Derived&>(*this).show(livingWindow(owner), link));
        });
    }

protected:
    // Null while none has been put.
    const com::ComPtr<IKelCommunicator>& communicator() const { return communicator_; }

private:
    com::ComPtr<IKelCommunicator> communicator_;
    bool isRunning_ = false;
};

}  // namespace kel::ui
