#pragma once
// A terminal on a container and a link, both doubles.

#include <gtest/gtest.h>

#include <string>

#include "interfaces/KelUtils.h"
#include "tests/wine/support/event_sink.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/library.h"
#include "tests/wine/terminal/container.h"

namespace kel::test {

template <class Interface>
com::ComPtr<Interface> to(IUnknown* object) {
    com::ComPtr<Interface> found;
    EXPECT_EQ(object->QueryInterface(IID_PPV_ARGS(&found)), S_OK);
    return found;
}

class TerminalTest : public testing::Test {
protected:
    void TearDown() override {
        if (terminal) close();
    }

    static com::ComPtr<IOleObject> newTerminal() {
        return kelUtils().create<IOleObject>(CLSID_KelTerminal);
    }

    template <class Interface>
    com::ComPtr<Interface> as() const {
        return to<Interface>(terminal.Get());
    }
    com::ComPtr<IOleObject> object() const { return as<IOleObject>(); }

    HRESULT perform(IOleObject* control, LONG verb) {
        return control->DoVerb(verb, nullptr, container.site(), 0, container.window(), nullptr);
    }
    HRESULT verb(LONG verb) { return perform(object().Get(), verb); }

    void activate(LONG verb = OLEIVERB_INPLACEACTIVATE) {
        ASSERT_EQ(object()->SetClientSite(container.site()), S_OK);
        ASSERT_EQ(perform(object().Get(), verb), S_OK);
    }
    // As a container ends with a control.
    void close() {
        object()->Close(OLECLOSE_NOSAVE);
        object()->SetClientSite(nullptr);
        terminal.Reset();
    }

    HWND hwnd() const {
        long window = 0;
        EXPECT_EQ(terminal->get_hwnd(&window), S_OK);
        return static_cast<HWND>(LongToHandle(window));
    }
    HWND output() const { return GetDlgItem(hwnd(), 201); }
    HWND commandLine() const { return GetDlgItem(hwnd(), 202); }

    static std::wstring textOf(HWND window) { return com::windowText(window); }

    // Dispatches what waits, as a plain message loop does.
    static void runMessages() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    void tick() { SendMessageW(hwnd(), WM_TIMER, 1, 0); }

    FakeLink link;
    Container container;
    com::ComPtr<IKelTerminal3> terminal = kelUtils().create<IKelTerminal3>(CLSID_KelTerminal);
};

}  // namespace kel::test
