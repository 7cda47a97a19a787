#include "hosts/kelrun/run_events.h"

#include <string>

#include "com/object.h"
#include "com/text.h"
#include "com/variant.h"

namespace kel::kelrun {
namespace {

// The members of _IPreprocessorEvents that are listened to.
enum EventMember : DISPID { kLineStarted = 3, kLineSent = 4, kErrorFound = 7 };

// The arguments of an event, in the order of its declaration.
class Arguments {
public:
    explicit Arguments(const DISPPARAMS& parameters) : parameters_(parameters) {}

    std::wstring text(UINT index) const {
        const com::Variant value = at(index).convertedTo(VT_BSTR);
        return std::wstring(com::view(value.get().bstrVal));
    }

    std::size_t number(UINT index) const {
        return static_cast<std::size_t>(at(index).convertedTo(VT_I4).get().lVal);
    }

private:
    com::Variant at(UINT index) const {
        if (index >= parameters_.cArgs) throw com::Error(DISP_E_BADPARAMCOUNT);
        return com::Variant(parameters_.rgvarg[parameters_.cArgs - 1 - index]);
    }

    const DISPPARAMS& parameters_;
};

std::string utf8(const std::wstring& text) {
    return com::narrow(text, CP_UTF8);
}

class Sink final : public com::Object<Sink, com::Plain<IDispatch>> {
public:
    static constexpr com::ClassDescription kClass{};

    Sink(ScriptPlace& place, const Trace& trace, Transcript* transcript)
        : place_(place), trace_(trace), transcript_(transcript) {}

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        return guarded<IDispatch>([&] { com::out(count) = 0; });
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*,
                        EXCEPINFO*, UINT*) override {
        const HRESULT code = guarded<IDispatch>([&] {
            if (!parameters) return E_INVALIDARG;
            take(member, Arguments(*parameters));
            return S_OK;
        });
        if (FAILED(code) && transcript_) transcript_->lose();
        return code;
    }

private:
    void take(DISPID member, const Arguments& arguments) {
        if (member == kLineStarted) {
            place_ = {utf8(arguments.text(0)), arguments.number(1)};
            trace_.setPosition(place_.file, static_cast<long>(place_.line));
        }
        if (transcript_) tell(*transcript_, member, arguments);
    }

    void tell(Transcript& transcript, DISPID member, const Arguments& arguments) const {
        switch (member) {
            case kLineStarted:
                transcript.lineStarted(place_.file, place_.line);
                break;
            case kLineSent:
                transcript.sent(utf8(arguments.text(0)));
                break;
            case kErrorFound: {
                const std::wstring message = arguments.text(3);
                transcript.errorFound(utf8(arguments.text(0)), arguments.number(1),
                                      std::u16string(message.begin(), message.end()));
                break;
            }
            default:
                break;
        }
    }

    ScriptPlace& place_;
    const Trace& trace_;
    Transcript* transcript_;
};

}  // namespace

RunEvents::RunEvents(const com::ComPtr<IPreprocessorControl>& preprocessor, const Trace& trace,
                     Transcript* transcript) {
    com::ComPtr<IConnectionPointContainer> container;
    com::check(preprocessor.As(&container), preprocessor);
    com::check(container->FindConnectionPoint(DIID__IPreprocessorEvents, &source_), container);
    const auto sink = com::makeObject<Sink>(place_, trace, transcript);
    com::check(source_->Advise(sink->controlling(), &cookie_), source_);
}

RunEvents::~RunEvents() {
    source_->Unadvise(cookie_);
}

}  // namespace kel::kelrun
