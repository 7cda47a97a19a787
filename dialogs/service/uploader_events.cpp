#include "dialogs/service/uploader_events.h"

#include "com/event_sink.h"
#include "com/text.h"
#include "com/variant.h"

namespace kel::service {
namespace {

constexpr DISPID kStatusText = 1;
constexpr DISPID kProgress = 2;

com::Variant argumentOf(DISPPARAMS& arguments, UINT position, VARTYPE type) {
    com::Variant argument;
    UINT wrong = 0;
    com::check(DispGetParam(&arguments, position, type, argument.put(), &wrong));
    return argument;
}

}  // namespace

class UploaderEvents::Sink final
    : public com::Object<Sink, com::EventReceiver<_IFirmwareUploaderEvents>> {
public:
    static constexpr com::ClassDescription kClass{};
    explicit Sink(UploadListener& listener) : listener_(&listener) {}

    void leave() { listener_ = nullptr; }

private:
    HRESULT received(DISPID event, DISPPARAMS* arguments, VARIANT*) override {
        if (!arguments) return E_INVALIDARG;
        const com::KeepAlive alive(*this);
        switch (event) {
            case kStatusText: {
                const auto text = argumentOf(*arguments, 0, VT_BSTR);
                if (listener_) listener_->uploaderSays(std::wstring(com::view(text.get().bstrVal)));
                return S_OK;
            }
            case kProgress: {
                const auto done = argumentOf(*arguments, 0, VT_I4);
                const auto total = argumentOf(*arguments, 1, VT_I4);
                if (listener_) listener_->uploaderProgresses(done.get().lVal, total.get().lVal);
                return S_OK;
            }
            default:
                return DISP_E_MEMBERNOTFOUND;
        }
    }

    UploadListener* listener_;
};

UploaderEvents::UploaderEvents(const com::ComPtr<IFirmwareUploader>& uploader,
                               UploadListener& listener)
    : sink_(com::makeObject<Sink>(listener)) {
    com::ComPtr<IConnectionPointContainer> container;
    if (FAILED(uploader.As(&container))) return;
    com::check(container->FindConnectionPoint(__uuidof(_IFirmwareUploaderEvents), &point_),
               container);
    com::check(point_->Advise(sink_->controlling(), &cookie_), point_);
}

UploaderEvents::~UploaderEvents() {
    sink_->leave();
    if (point_) point_->Unadvise(cookie_);
}

}  // namespace kel::service
