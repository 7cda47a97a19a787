#pragma once
// The receiver of the script control's events.

#include <functional>

#include "com/event_sink.h"

namespace kel::html {

inline constexpr IID kControlEvents = {
    0x8B167D60, 0x8605, 0x11D0, {0xAB, 0xCB, 0x00, 0xA0, 0xC9, 0x0F, 0xFF, 0xC0}};

// Calls a function for each script error. The control may hold it longer than that function can be
// called: then it has to leave().
class ErrorSink final : public com::Object<ErrorSink, com::EventReceiver<>> {
public:
    static constexpr com::ClassDescription kClass{};
    explicit ErrorSink(std::function<void()> told) : told_(std::move(told)) {}

    void leave() { told_ = nullptr; }

protected:
    HRESULT received(DISPID event, DISPPARAMS*, VARIANT*) override {
        constexpr DISPID kErrorEvent = 3000;
        // A copy: what it shows may let go of everything, and leave() is called meanwhile.
        const std::function<void()> told = told_;
        if (event == kErrorEvent && told) told();
        return S_OK;
    }

    void* findInterface(REFIID iid) override {
        return Object::findInterface(iid == kControlEvents ? IID_IDispatch : iid);
    }

private:
    std::function<void()> told_;
};

}  // namespace kel::html
