// The control's window in the window of its container.
#include "ole/control.h"

namespace kel::ole {

namespace {

bool isOf(HWND window, HWND control) {
    return window == control || IsChild(control, window);
}

// The platform's KEYMODIFIERS, which not every tool chain declares.
constexpr DWORD kShiftModifier = 1;
constexpr DWORD kControlModifier = 2;
constexpr DWORD kAltModifier = 4;

bool isKeyDown(UINT message) {
    return message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
}

// What the container must know of the keys beside a message.
DWORD keyModifiers() {
    const auto isDown = [](int key) { return GetKeyState(key) < 0; };
    return (isDown(VK_SHIFT) ? kShiftModifier : 0) | (isDown(VK_CONTROL) ? kControlModifier : 0) |
           (isDown(VK_MENU) ? kAltModifier : 0);
}

}  // namespace

void Control::activate(bool withUserInterface) {
    if (!place_) {
        const auto place = site_.as<IOleInPlaceSite>();
        if (!place) throw com::Error(E_FAIL, L"The container has no place for a window");
        if (place->CanInPlaceActivate() != S_OK)
            throw com::Error(E_FAIL, L"The container refuses the control's window for now");
        enterPlace(place);
    } else if (const HWND window = windowOfControl()) {
        ShowWindow(window, SW_SHOW);
    }
    if (withUserInterface) takeUserInterface();
    const com::ComPtr<IOleClientSite> site = site_.get();
    if (site) site->ShowObject();
}

void Control::enterPlace(const com::ComPtr<IOleInPlaceSite>& place) {
    com::ComPtr<IOleInPlaceSiteEx> extended;
    place.As(&extended);
    BOOL paintsItself = FALSE;
    com::check(
        extended ? extended->OnInPlaceActivateEx(&paintsItself, 0) : place->OnInPlaceActivate(),
        place);
    place_ = place;
    try {
        HWND parent = nullptr;
        RECT position{};
        RECT clip{};
        OLEINPLACEFRAMEINFO keys{};
        keys.cb = sizeof keys;
        com::ComPtr<IOleInPlaceFrame> frame;
        com::ComPtr<IOleInPlaceUIWindow> document;
        com::check(place->GetWindow(&parent), place);
        com::check(place->GetWindowContext(&frame, &document, &position, &clip, &keys), place);
        // Any of these calls may have deactivated the control.
        if (!place_) return;
        frame_ = frame;
        document_ = document;
        if (!windowOfControl()) createWindow(parent, position);
        placeWindow(position, &clip);
    } catch (...) {
        leavePlace();
        throw;
    }
}

void Control::takeUserInterface() {
    if (!place_ || hasUserInterface_) return;
    const com::ComPtr<IOleInPlaceSite> place = place_;
    const com::ComPtr<IOleInPlaceFrame> frame = frame_;
    const com::ComPtr<IOleInPlaceUIWindow> document = document_;
    com::check(place->OnUIActivate(), place);
    if (!place_) return;
    hasUserInterface_ = true;

    const HWND window = windowOfControl();
    const HWND focus = GetFocus();
    if (window && focus != window && !IsChild(window, focus)) SetFocus(window);
    // The control has neither menus nor tool bars for them.
    if (frame && hasUserInterface_) {
        frame->SetActiveObject(this, description().userType);
        frame->SetBorderSpace(nullptr);
    }
    if (document && hasUserInterface_) {
        document->SetActiveObject(this, description().userType);
        document->SetBorderSpace(nullptr);
    }
}

void Control::leaveUserInterface() {
    if (!hasUserInterface_) return;
    hasUserInterface_ = false;
    const com::ComPtr<IOleInPlaceSite> place = place_;
    const com::ComPtr<IOleInPlaceFrame> frame = frame_;
    const com::ComPtr<IOleInPlaceUIWindow> document = document_;
    if (document) document->SetActiveObject(nullptr, nullptr);
    if (frame) frame->SetActiveObject(nullptr, nullptr);
    if (place) place->OnUIDeactivate(FALSE);
}

void Control::leavePlace() {
    if (!place_) return;
    leaveUserInterface();
    const com::ComPtr<IOleInPlaceSite> place = std::exchange(place_, nullptr);
    // A container may have deactivated the control meanwhile.
    if (!place) return;
    frame_.Reset();
    document_.Reset();
    destroyWindow();
    hasFocus_ = false;
    place->OnInPlaceDeactivate();
}

void Control::leaveContainer() noexcept {
    answer<IOleInPlaceObject>([&] { leavePlace(); });
}

HRESULT Control::GetWindow(HWND* window) {
    return answer<IOleInPlaceObject>([&] {
        com::out(window) = windowOfControl();
        if (!*window) throw com::Error(E_UNEXPECTED, L"The control has no window");
    });
}

HRESULT Control::InPlaceDeactivate() {
    return answer<IOleInPlaceObject>([&] { leavePlace(); });
}

HRESULT Control::UIDeactivate() {
    return answer<IOleInPlaceObject>([&] { leaveUserInterface(); });
}

HRESULT Control::SetObjectRects(LPCRECT position, LPCRECT clip) {
    return answer<IOleInPlaceObject>([&] {
        if (!position) throw com::Error(E_POINTER);
        placeWindow(*position, clip);
    });
}

void Control::placeWindow(const RECT& position, const RECT* clip) {
    const HWND window = windowOfControl();
    if (!window) return;
    RECT visible = position;
    HRGN region = nullptr;
    const bool isClipped =
        clip && (!IntersectRect(&visible, &position, clip) || !EqualRect(&visible, &position));
    if (isClipped) {
        OffsetRect(&visible, -position.left, -position.top);
        region = CreateRectRgnIndirect(&visible);
    }
    // The window takes the region over, unless it refuses it.
    if (!SetWindowRgn(window, region, TRUE) && region) DeleteObject(region);
    MoveWindow(window, position.left, position.top, position.right - position.left,
               position.bottom - position.top, TRUE);
    ShowWindow(window, SW_SHOWNA);
}

void Control::focusChanged(bool hasFocus) {
    if (std::exchange(hasFocus_, hasFocus) == hasFocus) return;
    const com::ComPtr<IOleObject> alive(this);
    if (hasFocus) takeUserInterface();
    if (const auto container = site_.as<IOleControlSite>()) container->OnFocus(hasFocus);
}

HRESULT Control::TranslateAccelerator(LPMSG message) {
    return answer<IOleInPlaceActiveObject>([&]() -> HRESULT {
        if (!message) throw com::Error(E_POINTER);
        const HWND window = windowOfControl();
        if (window && isKeyDown(message->message) && isOf(message->hwnd, window)) {
            const LRESULT wanted = SendMessageW(message->hwnd, WM_GETDLGCODE, message->wParam,
                                                reinterpret_cast<LPARAM>(message));
            if (wanted & DLGC_WANTMESSAGE) {
                SendMessageW(message->hwnd, message->message, message->wParam, message->lParam);
                return S_OK;
            }
            if (message->wParam == VK_TAB && message->message == WM_KEYDOWN &&
                moveFocus(*message) == S_OK) {
                return S_OK;
            }
        }
        const auto container = site_.as<IOleControlSite>();
        return container ? container->TranslateAccelerator(message, keyModifiers()) : S_FALSE;
    });
}

// Inside the control; S_FALSE at its ends, where the container's next control has its turn.
HRESULT Control::moveFocus(const MSG& message) {
    const HWND window = windowOfControl();
    const bool isBackward = GetKeyState(VK_SHIFT) < 0;
    const HWND first = GetNextDlgTabItem(window, nullptr, FALSE);
    const HWND now = message.hwnd;
    const HWND next = GetNextDlgTabItem(window, now, isBackward);
    if (!next || next == now) return S_FALSE;
    // Around an end: onto the first control going forward, from it going backward.
    const bool isLeaving = isBackward ? now == first || IsChild(first, now) : next == first;
    if (isLeaving) return S_FALSE;
    SendMessageW(window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(next), TRUE);
    return S_OK;
}

}  // namespace kel::ole
