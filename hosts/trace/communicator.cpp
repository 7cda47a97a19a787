#include "hosts/trace/communicator.h"

#include "com/text.h"
#include "hosts/trace/file.h"
#include "hosts/trace/kinds.h"
#include "hosts/trace/recorder_access.h"

namespace kel::trace {
namespace {

// Tells a file's contents apart from others; null for a file that cannot be read.
Json fingerprintOf(const std::wstring& path) {
    try {
        Fingerprint fingerprint;
        fingerprint.add(File::open(path).readAll());
        return fingerprint.text();
    } catch (const com::Error&) {
        return {};
    }
}

com::ComPtr<IUnknown> identityOf(IUnknown* object) {
    com::ComPtr<IUnknown> identity;
    if (object) object->QueryInterface(IID_PPV_ARGS(&identity));
    return identity;
}

com::ComPtr<IKelStream> asStream(const com::ComPtr<IUnknown>& object) {
    com::ComPtr<IKelStream> stream;
    com::check(object.As(&stream));
    return stream;
}

}  // namespace

HRESULT Communicator::RunCommandFile(BSTR path, VARIANT_BOOL* result) {
    return guardedCall([&] {
        Invocation made =
            invocation<&IKelCommunicator::RunCommandFile>("RunCommandFile", path, result);
        made.in = [path] {
            const std::wstring file(com::view(path));
            return Json::Array{toText(file), fingerprintOf(file)};
        };
        return made;
    });
}

HRESULT Communicator::get_Port(IKelStream** stream) {
    return guardedCall([&] {
        Invocation made =
            invocation<&IKelCommunicator::get_Port, Treatment::kState>("get_Port", stream);
        made.forward = [=, this] { return giveInnerPort(stream); };
        made.give = [=, this](const Json::Array& values) {
            com::out(stream);
            if (values.at(0).isNull()) return;
            port_ = asStream(replayed(sharedSession(), values.at(0).utf8Text()));
            port_.CopyTo(stream);
        };
        return made;
    });
}

HRESULT Communicator::giveInnerPort(IKelStream** stream) {
    if (!stream) return wrapped()->get_Port(nullptr);
    *stream = nullptr;
    com::ComPtr<IKelStream> innerPort;
    const HRESULT code = wrapped()->get_Port(&innerPort);
    if (FAILED(code)) return code;
    com::ComPtr<IKelStream> port;
    if (innerPort) port = asStream(wrap(sharedSession(), innerPort.Get()));
    std::swap(port_, port);
    port_.CopyTo(stream);
    return code;
}

HRESULT Communicator::put_Port(IKelStream* stream) {
    return guardedCall([&] {
        Invocation made = invocation<&IKelCommunicator::put_Port>("put_Port", stream);
        made.forward = [=, this] { return forwardPort(stream); };
        // In a replay nothing else holds the port; a host lets it go whatever the call answers.
        if (session().isReplay()) port_ = stream;
        return made;
    });
}

HRESULT Communicator::forwardPort(IKelStream* stream) {
    com::ComPtr<IKelStream> port;
    com::ComPtr<IKelStream> innerPort = stream;
    if (stream) {
        TracedObject* traced = TracedObject::from(stream);
        if (traced && traced->innerObject())
            com::check(traced->innerObject()->QueryInterface(IID_PPV_ARGS(&innerPort)));
        port = asStream(wrap(sharedSession(), innerPort.Get()));
    }
    const HRESULT code = wrapped()->put_Port(innerPort.Get());
    if (SUCCEEDED(code)) std::swap(port_, port);
    return code;
}

HRESULT Communicator::get_Preprocessor(IPreprocessor** preprocessor) {
    return guardedCall([&] {
        Invocation made = invocation<&IKelCommunicator::get_Preprocessor, Treatment::kLocal>(
            "get_Preprocessor", preprocessor);
        made.forward = [=, this] {
            com::ComPtr<IPreprocessor> host = relay_ ? relay_->target() : nullptr;
            if (wrapped()) {
                com::ComPtr<IPreprocessor> known;
                const HRESULT code = wrapped()->get_Preprocessor(preprocessor ? &known : nullptr);
                if (FAILED(code) || !preprocessor) return code;
                const bool isRelay =
                    relay_ && identityOf(known.Get()).Get() == relay_->controlling();
                if (!isRelay) host = known;
            }
            com::out(preprocessor) = host.Detach();
            return S_OK;
        };
        return made;
    });
}

HRESULT Communicator::put_Preprocessor(IPreprocessor* preprocessor) {
    return guardedCall([&] {
        Invocation made =
            invocation<&IKelCommunicator::put_Preprocessor>("put_Preprocessor", preprocessor);
        made.forward = [=, this] { return forwardPreprocessor(preprocessor); };
        if (session().isReplay()) {
            relay_ = preprocessor
                         ? com::makeObject<PreprocessorRelay>(sharedSession(), name(), preprocessor)
                         : nullptr;
        }
        return made;
    });
}

HRESULT Communicator::forwardPreprocessor(IPreprocessor* preprocessor) {
    com::ComPtr<PreprocessorRelay> relay;
    if (preprocessor) {
        relay = com::makeObject<PreprocessorRelay>(sharedSession(), name(), preprocessor);
    }
    const HRESULT code = wrapped()->put_Preprocessor(relay.Get());
    if (SUCCEEDED(code)) std::swap(relay_, relay);
    return code;
}

HRESULT Communicator::findElsewhere(REFIID iid, void** result) {
    if (iid == __uuidof(IRecorderAccess)) return giveRecorder(result);
    const bool isOfRecorder = iid == IID_IConnectionPointContainer || Passage::isAskedFor(iid);
    if (ownRecorder_ && isOfRecorder) return ownRecorder_->QueryInterface(iid, result);
    return Traced::findElsewhere(iid, result);
}

HRESULT Communicator::giveRecorder(void** result) {
    com::ComPtr<IUnknown> recorder;
    const HRESULT code = guardedCall([&] {
        Invocation made{*this,  IID_IUnknown, "IUnknown", "QueryInterface", Treatment::kState,
                        nullptr};
        made.in = [] { return Json::Array{kNameOf<IRecorderAccess>}; };
        made.forward = [&] { return askForRecorder(recorder); };
        made.out = [&] {
            Json::Array values = told(recorder.Get());
            values.resize(2);
            values.push_back(ownRecorder_ && recorder.Get() == ownRecorder_.Get());
            return values;
        };
        made.give = [&](const Json::Array& values) {
            if (values.at(2) == Json(true)) {
                makeOwnRecorder(values[0].utf8Text(), nullptr, Mobility::fromJson(values[1]));
                recorder = ownRecorder_;
            } else {
                recorder = replayed(sharedSession(), values);
            }
        };
        return made;
    });
    if (FAILED(code)) return code;
    return recorder ? recorder->QueryInterface(__uuidof(IRecorderAccess), result) : E_NOINTERFACE;
}

HRESULT Communicator::askForRecorder(com::ComPtr<IUnknown>& recorder) {
    if (!innerObject()) return E_NOINTERFACE;
    com::ComPtr<IUnknown> inner;
    const HRESULT code = innerObject()->QueryInterface(
        __uuidof(IRecorderAccess), reinterpret_cast<void**>(inner.GetAddressOf()));
    if (FAILED(code)) return code;
    if (identityOf(inner.Get()).Get() != innerObject()) {
        recorder = wrap(sharedSession(), inner.Get());
        return code;
    }
    if (!ownRecorder_)
        makeOwnRecorder(session().objects().nextName("recorder"), inner.Get(),
                        Mobility::of(inner.Get()));
    recorder = ownRecorder_;
    return code;
}

void Communicator::makeOwnRecorder(const std::string& name, IUnknown* inner,
                                   const Mobility& mobility) {
    if (ownRecorder_) return;
    ownRecorder_ =
        com::createObject<RecorderAccess>(controlling(), static_cast<RecorderAccess**>(nullptr),
                                          sharedSession(), name, inner, mobility);
}

bool Communicator::runsMessages() const {
    const TracedObject* port = TracedObject::from(port_.Get());
    return !port || port->runsMessages();
}

void Communicator::runScript(const std::wstring& script) {
    if (!relay_) return;
    const com::ComPtr<IPreprocessor> preprocessor = relay_->target();
    VARIANT_BOOL ran = VARIANT_FALSE;
    // What came of it is what the recording tells.
    preprocessor->PreprocessAndRun(com::Bstr(std::wstring_view(script)).get(), &ran);
}

}  // namespace kel::trace
