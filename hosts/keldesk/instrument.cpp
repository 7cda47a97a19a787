#include "hosts/keldesk/instrument.h"

#include <utility>

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
    auto connection = std::make_unique<host::Connection>(target);
    const auto& stream = connection->stream();
    // Waits of scripts dispatch the messages of the window.
    com::check(stream->put_IdleProcessing(VARIANT_TRUE), stream);
    com::check(stream->put_LogFile(com::Bstr(logFile_).get()), stream);
    com::check(link_->put_Port(stream.Get()), link_);
    connection_ = std::move(connection);
}

void Instrument::disconnect() {
    if (!connection_) return;
    link_->put_Port(nullptr);
    connection_.reset();
}

bool Instrument::isAlive() const {
    VARIANT_BOOL isOpen = VARIANT_FALSE;
    return connection_ && SUCCEEDED(connection_->stream()->get_IsOpen(&isOpen)) &&
           com::isTrue(isOpen);
}

void Instrument::setLogFile(const std::wstring& path) {
    if (connection_) {
        const auto& stream = connection_->stream();
        com::check(stream->put_LogFile(com::Bstr(path).get()), stream);
    }
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
