#include "hosts/kelrun/run_events.h"

#include <string>

#include "com/object.h"
#include "com/text.h"
#include "com/variant.h"

namespace kel::kelrun {
namespace {

// The members of _IPreprocessorEvents that a transcript tells of.
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

    explicit Sink(Transcript& transcript) : transcript_(transcript) {}

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
            tell(member, Arguments(*parameters));
            return S_OK;
        });
        if (FAILED(code)) transcript_.lose();
        return code;
    }

private:
    void tell(DISPID member, const Arguments& arguments) {
        switch (member) {
            case kLineStarted:
                transcript_.lineStarted(utf8(arguments.text(0)), arguments.number(1));
                break;
            case kLineSent:
                transcript_.sent(utf8(arguments.text(0)));
                break;
            case kErrorFound: {
                const std::wstring message = arguments.text(3);
                transcript_.errorFound(utf8(arguments.text(0)), arguments.number(1),
                                       std::u16string(message.begin(), message.end()));
                break;
            }
            default:
                break;
        }
    }

    Transcript& transcript_;
};

}  // namespace

RunEvents::RunEvents(const com::ComPtr<IPreprocessorControl>& preprocessor,
                     Transcript& transcript) {
    com::ComPtr<IConnectionPointContainer> container;
    com::check(preprocessor.As(&container), preprocessor);
    com::check(container->FindConnectionPoint(DIID__IPreprocessorEvents, &source_), container);
    const auto sink = com::makeObject<Sink>(transcript);
    com::check(source_->Advise(sink->controlling(), &cookie_), source_);
}

RunEvents::~RunEvents() {
    source_->Unadvise(cookie_);
}

}  // namespace kel::kelrun
