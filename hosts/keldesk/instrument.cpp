#include "hosts/keldesk/instrument.h"

#include <utility>

#include "com/port.h"
#include "com/scoped.h"
#include "com/text.h"
#include "com/variant.h"
#include "hosts/shared/create.h"

namespace kel::keldesk {
namespace {

constexpr char kPreprocessorRemedy[] = "run regsvr32 KelUtils.dll";
constexpr char kLinkRemedy[] =
    "register the instrument link's library with regsvr32, or choose another with --link";

}  // namespace

Instrument::Instrument(const std::string& link, HWND owner, host::ScriptEvents::Listener listener)
    : preprocessor_(
          host::create<IPreprocessorControl>("KelUtils.Preprocessor", kPreprocessorRemedy)),
      link_(host::create<IKelCommunicator>(link, kLinkRemedy)),
      events_(preprocessor_, std::move(listener)) {
    com::check(preprocessor_->put_ParentWindow(HandleToLong(owner)), preprocessor_);
    com::check(preprocessor_->put_Communicator(link_.Get()), preprocessor_);
    com::check(link_->put_Preprocessor(preprocessor_.Get()), link_);
}

Instrument::~Instrument() {
    disconnect();
    link_->put_Preprocessor(nullptr);
    preprocessor_->put_Communicator(nullptr);
}

void Instrument::connect(const host::Target& target) {
    const auto fresh = host::openStream(target);
    try {
        com::check(link_->put_Port(fresh.Get()), link_);
    } catch (...) {
        fresh->Close();
        throw;
    }
    if (stream_) stream_->Close();
    adopt();
}

void Instrument::adopt() {
    stream_ = com::portOf(link_);
}

void Instrument::prepare() {
    if (!stream_) return;
    // Waits of scripts dispatch the messages of the window.
    com::check(stream_->put_IdleProcessing(VARIANT_TRUE), stream_);
    const std::wstring path = std::exchange(logFile_, {});
    com::check(stream_->put_LogFile(com::Bstr(path).get()), stream_);
    logFile_ = path;
}

void Instrument::disconnect() {
    if (!stream_) return;
    link_->put_Port(nullptr);
    stream_->Close();
    stream_ = nullptr;
}

std::wstring Instrument::connection() const {
    if (!stream_) return {};
    com::Bstr name;
    com::check(stream_->get_ConnectionString(name.put()), stream_);
    std::wstring text(name.view());
    com::ComPtr<ISerialStream> serial;
    if (FAILED(stream_.As(&serial))) return text;
    if (text.ends_with(L':')) text.pop_back();
    long rate = 0;
    com::check(stream_->get_BaudRate(&rate), stream_);
    return text + L", " + std::to_wstring(rate) + L" baud";
}

bool Instrument::isAlive() const {
    VARIANT_BOOL isOpen = VARIANT_FALSE;
    return stream_ && SUCCEEDED(stream_->get_IsOpen(&isOpen)) && com::isTrue(isOpen);
}

void Instrument::setLogFile(const std::wstring& path) {
    if (stream_) com::check(stream_->put_LogFile(com::Bstr(path).get()), stream_);
    logFile_ = path;
}

bool Instrument::run(const std::wstring& name, std::wstring_view folder, std::wstring_view text) {
    com::check(preprocessor_->put_ScriptPath(com::Bstr(folder).get()), preprocessor_);
    com::check(preprocessor_->put_ScriptName(com::Bstr(name).get()), preprocessor_);
    const com::Scoped running(isRunning_, true);
    VARIANT_BOOL ran = VARIANT_FALSE;
    com::checkOwn(preprocessor_->PreprocessAndRun(com::Bstr(text).get(), &ran));
    return com::isTrue(ran);
}

void Instrument::cancel() {
    com::check(preprocessor_->Cancel(), preprocessor_);
}

bool Instrument::wasCancelled() const {
    VARIANT_BOOL cancelled = VARIANT_FALSE;
    com::check(preprocessor_->get_Cancelled(&cancelled), preprocessor_);
    return com::isTrue(cancelled);
}

std::vector<host::Diagnostic> Instrument::check(const std::wstring& name,
                                                std::wstring_view text) const {
    com::ComPtr<IScriptDiagnostics> found;
    com::check(preprocessor_->put_ScriptName(com::Bstr(name).get()), preprocessor_);
    com::check(preprocessor_->Check(com::Bstr(text).get(), &found), preprocessor_);
    return host::readDiagnostics(found);
}

std::vector<host::Diagnostic> Instrument::lastRun() const {
    com::ComPtr<IScriptDiagnostics> found;
    com::check(preprocessor_->get_Diagnostics(&found), preprocessor_);
    return host::readDiagnostics(found);
}

std::vector<host::NamedText> Instrument::variables() const {
    return host::readVariables(preprocessor_);
}

}  // namespace kel::keldesk
