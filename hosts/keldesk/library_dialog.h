#pragma once
// The modal dialogs of the library: made for a link, and shown.

#include <windows.h>

#include "com/error.h"
#include "com/variant.h"
#include "hosts/shared/create.h"
#include "interfaces/KelUtils.h"

namespace kel::keldesk {

// Throws host::Failure (not registered), com::Error.
template <class Dialog>
com::ComPtr<Dialog> dialogFor(const char* component, const com::ComPtr<IKelCommunicator>& link) {
    auto dialog = host::create<Dialog>(component, "run regsvr32 KelUtils.dll");
    com::check(dialog->put_Communicator(link.Get()), dialog);
    return dialog;
}

// True when it ended with success. Throws com::Error.
template <class Dialog>
bool showOver(HWND owner, const com::ComPtr<Dialog>& dialog) {
    VARIANT_BOOL result = VARIANT_FALSE;
    com::check(dialog->ShowModal(HandleToLong(owner), &result), dialog);
    return com::isTrue(result);
}

}  // namespace kel::keldesk
