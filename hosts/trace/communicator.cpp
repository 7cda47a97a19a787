#include "hosts/trace/communicator.h"

#include <cstdio>

#include "com/text.h"
#include "hosts/trace/file.h"
#include "hosts/trace/kinds.h"

namespace kel::trace {
namespace {

// Tells a file's contents apart from others; null for a file that cannot be read.
Json fingerprint(const std::wstring& path) {
    try {
        const std::string bytes = File::open(path).readAll();
        std::uint64_t hash = 0xCBF29CE484222325u;  // FNV-1a
        for (const char byte : bytes)
            hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
        char text[17];
        std::snprintf(text, sizeof text, "%08lx%08lx", static_cast<unsigned long>(hash >> 32),
                      static_cast<unsigned long>(hash & 0xFFFFFFFFu));
        return std::string(text);
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
            return Json::Array{toText(file), fingerprint(file)};
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
