#include "hosts/kelrun/trace.h"

#include "com/text.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/library_search.h"
#include "hosts/shared/model/failure.h"

namespace kel::kelrun {
namespace {

constexpr wchar_t kLibraryName[] = L"KelTrace.dll";

// It stays loaded: its objects may be used to the very end.
HMODULE loadLibrary() {
    if (const HMODULE library = loadFromProgramFolder(kLibraryName)) return library;
    const DWORD error = GetLastError();
    throw Failure(ExitCode::kNotRegistered,
                  com::narrow(std::wstring_view(kLibraryName), CP_UTF8) +
                      " beside kelrun cannot be loaded: " + systemText(error));
}

com::ComPtr<ITraceSession> createSession() {
    using GetClassObject = HRESULT(STDMETHODCALLTYPE*)(REFCLSID, REFIID, void**);
    const auto getClassObject = reinterpret_cast<GetClassObject>(
        reinterpret_cast<void*>(GetProcAddress(loadLibrary(), "DllGetClassObject")));
    if (!getClassObject) throw com::lastError();
    com::ComPtr<IClassFactory> factory;
    com::check(getClassObject(__uuidof(TraceSession), IID_PPV_ARGS(&factory)));
    com::ComPtr<ITraceSession> session;
    com::check(factory->CreateInstance(nullptr, IID_PPV_ARGS(&session)), factory);
    return session;
}

}  // namespace

Trace::Trace(const Options& options) : isReplay_(!options.replay.empty()) {
    if (options.record.empty() && !isReplay_) return;
    const std::string& path = isReplay_ ? options.replay : options.record;
    session_ = createSession();
    try {
        com::check(isReplay_ ? session_->Replay(com::Bstr(path, CP_UTF8).get(), options.speed)
                             : session_->Record(com::Bstr(path, CP_UTF8).get()),
                   session_);
    } catch (const com::Error& error) {
        throw Failure(ExitCode::kUsage, path + ": " + describe(error));
    }
}

com::ComPtr<IKelCommunicator> Trace::link(const Create& create) const {
    if (!session_) return create();
    const com::ComPtr<IKelCommunicator> inner = isReplay_ ? nullptr : create();
    com::ComPtr<IKelCommunicator> link;
    com::check(session_->Attach(inner.Get(), &link), session_);
    return link;
}

void Trace::setPosition(const std::string& file, long line) const {
    if (session_) com::check(session_->SetPosition(com::Bstr(file, CP_UTF8).get(), line), session_);
}

std::vector<std::string> Trace::close() {
    if (!session_) return {};
    std::vector<std::string> words;
    com::Bstr difference;
    long left = 0;
    if (isReplay_) {
        com::check(session_->get_Difference(difference.put()), session_);
        com::check(session_->get_CallsLeft(&left), session_);
    }
    if (!difference.view().empty()) {
        words.push_back(com::narrow(difference.view(), CP_UTF8));
    } else if (left > 0) {
        words.push_back("the run ended before the recording: " + std::to_string(left) +
                        " calls are left");
    }
    try {
        com::check(session_->Close(), session_);
    } catch (const com::Error& error) {
        words.push_back("the recording is not complete: " + describe(error));
    }
    session_.Reset();
    return words;
}

}  // namespace kel::kelrun
