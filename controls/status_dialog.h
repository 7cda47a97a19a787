#pragma once
// The StatusDialog component: a small modeless window that shows how far long work is.

#include "com/connection_point.h"
#include "com/object.h"
#include "controls/status_window.h"
#include "interfaces/KelUtils.h"

namespace kel::controls {

class StatusDialog final
    : public com::Object<StatusDialog, com::Dual<IStatusDialog2, IStatusDialog>,
                         com::Events<&DIID__IStatusDialogEvents>> {
public:
    static constexpr com::ClassDescription kClass{&CLSID_StatusDialog, L"KelUtils.StatusDialog.1"};

    STDMETHODIMP put_hwndParent(long window) override;
    STDMETHODIMP put_Message(BSTR text) override;
    STDMETHODIMP get_Position(long* position) override;
    STDMETHODIMP put_Position(long position) override;
    STDMETHODIMP SetProgressRange(long minimum, long maximum) override;
    STDMETHODIMP Show() override;
    STDMETHODIMP Hide() override;
    STDMETHODIMP get_ShowCancel(VARIANT_BOOL* isShown) override;
    STDMETHODIMP put_ShowCancel(VARIANT_BOOL isShown) override;

    // IStatusDialog2
    STDMETHODIMP get_Cancelled(VARIANT_BOOL* isCancelled) override;

private:
    // The border of what changes the window: that may call the host, and it may let go of the
    // object meanwhile.
    template <class Body>
    HRESULT changing(Body&& body) {
        return guarded<IStatusDialog>([&] {
            const com::KeepAlive alive(*this);
            body();
        });
    }

    void useBar();
    void userCancelled();

    long owner_ = 0;
    bool isCancelled_ = false;
    Status status_;
    StatusWindow window_{*this, status_, [this] { userCancelled(); }};
};

}  // namespace kel::controls
