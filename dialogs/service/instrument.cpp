#include "dialogs/service/instrument.h"

#include "com/variant.h"

namespace kel::service {

bool wakeInstrument(const com::ComPtr<IKelCommunicator>& link, HWND owner) {
    VARIANT_BOOL isAwake = VARIANT_FALSE;
    com::check(link->WakeUpInstrument(&isAwake), link);
    if (com::isTrue(isAwake)) return true;
    tellError(owner, L"Unable to connect with the instrument");
    return false;
}

void tellError(HWND owner, const wchar_t* text) {
    MessageBoxW(owner, text, L"Error", MB_OK | MB_ICONSTOP);
}

}  // namespace kel::service
