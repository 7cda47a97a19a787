#include "hosts/kelrun/session.h"

#include "com/port.h"
#include "com/text.h"
#include "com/variant.h"
#include "hosts/shared/create.h"
#include "hosts/shared/model/failure.h"
#include "hosts/shared/session.h"

namespace kel::kelrun {
namespace {

constexpr char kApplication[] = "kelrun";
constexpr char kLinkRemedy[] =
    "register the instrument link's library with regsvr32, or choose another with --link";

long handleNumber(HWND window) {
    return static_cast<long>(reinterpret_cast<LONG_PTR>(window));
}

}  // namespace

Session::Session(const com::ComPtr<IPreprocessorControl>& preprocessor, const Options& options,
                 const Trace& trace, Transcript* transcript, HostScript* script)
    : preprocessor_(preprocessor),
      communicator_(
          trace.link([&] { return create<IKelCommunicator>(options.link, kLinkRemedy); })),
      cancel_(preprocessor_),
      status_(!options.quiet),
      echo_(options.quiet, status_, transcript),
      connection_(connect(options)),
      script_(script),
      events_(preprocessor_, trace, status_, transcript, script) {}

// The components are there when this begins, so the destructor parts them if it fails.
Session::Session(const Options& options, const Preprocessor& preprocessor, const Trace& trace,
                 Transcript* transcript, HostScript* script)
    : Session(preprocessor.control(), options, trace, transcript, script) {
    const auto& stream = connection_.stream();
    com::check(stream->put_EchoWindow(handleNumber(echo_.window())), stream);
    com::check(stream->put_IdleProcessing(VARIANT_TRUE), stream);
    com::check(communicator_->put_Port(stream.Get()), communicator_);
    // The calls of a recording are those of the script and its run alone.
    if (options.hasInstrument() && !options.last && options.record.empty() &&
        options.replay.empty()) {
        rememberConnection(communicator_, kApplication);
    }
    com::check(preprocessor_->put_Communicator(communicator_.Get()), preprocessor_);
    com::check(communicator_->put_Preprocessor(preprocessor_.Get()), communicator_);
    // The stream keeps the order of what it shows. A return at the end joins with a following line
    // end into one.
    const auto print = [stream](std::wstring_view text) {
        const com::Bstr line(L"\r\n" + std::wstring(text) + L"\r");
        com::check(stream->Echo(line.get()), stream);
    };
    if (script_) script_->reachLink(communicator_, print);
}

com::ComPtr<IKelStream> Session::connect(const Options& options) const {
    if (!options.last) return openStream(options.target);
    connectAsLastTime(communicator_,
                      options.application.empty() ? kApplication : options.application);
    auto stream = com::portOf(communicator_);
    if (!stream) throw Failure(ExitCode::kNoConnection, "no connection: the link has no port");
    return stream;
}

Session::~Session() {
    if (script_) script_->leaveLink();
    communicator_->put_Preprocessor(nullptr);
    preprocessor_->put_Communicator(nullptr);
    communicator_->put_Port(nullptr);
    connection_.stream()->put_EchoWindow(0);
}

bool Session::run(std::wstring_view script) {
    if (cancel_.isRequested()) return false;
    const com::Bstr text(script);
    VARIANT_BOOL ran = VARIANT_FALSE;
    com::checkOwn(preprocessor_->PreprocessAndRun(text.get(), &ran));
    return com::isTrue(ran);
}

bool Session::wasCancelled() const {
    if (cancel_.isRequested()) return true;
    VARIANT_BOOL cancelled = VARIANT_FALSE;
    com::check(preprocessor_->get_Cancelled(&cancelled), preprocessor_);
    return com::isTrue(cancelled);
}

bool Session::finishDialogue() {
    status_.end();
    echo_.finish();
    return !echo_.isIncomplete();
}

}  // namespace kel::kelrun
