#pragma once
// The receiver of the script control's events.

#include <functional>

#include "com/object.h"

namespace kel::html {

inline constexpr IID kControlEvents = {
    0x8B167D60, 0x8605, 0x11D0, {0xAB, 0xCB, 0x00, 0xA0, 0xC9, 0x0F, 0xFF, 0xC0}};

// Calls a function for each script error. The control may hold it longer than that function can be
// called: then it has to leave().
class ErrorSink final : public com::Object<ErrorSink, com::Plain<IDispatch>> {
public:
    static constexpr com::ClassDescription kClass{};
    explicit ErrorSink(std::function<void()> told) : told_(std::move(told)) {}

    void leave() { told_ = nullptr; }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        return com::guardLateBound([&] { com::out(count) = 0; });
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) override {
        constexpr DISPID kErrorEvent = 3000;
        return com::guardLateBound([&] {
            // A copy: what it shows may let go of everything, and leave() is called meanwhile.
            const std::function<void()> told = told_;
            if (member == kErrorEvent && told) told();
        });
    }

protected:
    void* findInterface(REFIID iid) override {
        return Object::findInterface(iid == kControlEvents ? IID_IDispatch : iid);
    }

private:
    std::function<void()> told_;
};

}  // namespace kel::html
