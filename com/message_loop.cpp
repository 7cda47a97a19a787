#include "com/message_loop.h"

namespace kel::com {
namespace {

// A window that never validates its region would otherwise be asked to paint for ever.
constexpr int kMostMessages = 100;

}  // namespace

bool runWaitingMessages(HWND dialog) {
    MSG message;
    for (int i = 0; i < kMostMessages; ++i) {
        if (!PeekMessageW(&message, dialog, 0, 0, PM_REMOVE)) return true;
        if (message.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return false;
        }
        if (dialog && IsDialogMessageW(dialog, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return true;
}

void sleepUntilMessage(std::chrono::milliseconds duration) {
    MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(duration.count()), QS_ALLINPUT,
                                MWMO_INPUTAVAILABLE);
}

}  // namespace kel::com
