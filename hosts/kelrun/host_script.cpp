#include "hosts/kelrun/host_script.h"

#include <utility>

#include "com/text.h"
#include "hosts/kelrun/script_object.h"
#include "hosts/shared/create.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/model/failure.h"
#include "hosts/shared/script_file.h"

namespace kel::kelrun {
namespace {

using host::Diagnostic;
using host::ExitCode;
using host::Failure;

constexpr char kLibraryRemedy[] = "run regsvr32 KelUtils.dll";
constexpr wchar_t kLinkName[] = L"link";

com::ComPtr<IDispatch> makeDialogue(std::shared_ptr<const Print> print) {
    const auto function = [print](const ScriptObject::Arguments& arguments) {
        com::Variant text = com::Variant(std::wstring_view());
        if (!arguments.empty()) text = arguments.front().convertedTo(VT_BSTR);
        if (*print) (*print)(com::view(text.get().bstrVal));
        return com::Variant();
    };
    return com::makeObject<ScriptObject>(std::vector<ScriptObject::Member>{{L"print", function}});
}

com::ComPtr<IDispatch> makeCommandLine(const std::vector<std::string>& words) {
    const auto item = [words](const ScriptObject::Arguments& arguments) {
        if (arguments.size() != 1) throw com::Error(DISP_E_BADPARAMCOUNT);
        const long index = arguments.front().convertedTo(VT_I4).get().lVal;
        if (index < 0 || static_cast<std::size_t>(index) >= words.size()) {
            throw com::Error(DISP_E_BADINDEX,
                             L"The command line has no argument " + std::to_wstring(index));
        }
        const std::string& word = words[static_cast<std::size_t>(index)];
        return com::Variant(std::wstring_view(com::widen(word, CP_UTF8)));
    };
    const auto count = [size = static_cast<long>(words.size())](const auto&) {
        return com::Variant(size);
    };
    return com::makeObject<ScriptObject>(
        std::vector<ScriptObject::Member>{{L"Item", item}, {L"Count", count}});
}

com::Variant text(const std::string& utf8) {
    return com::Variant(std::wstring_view(com::widen(utf8, CP_UTF8)));
}

com::Variant number(std::size_t value) {
    return com::Variant(static_cast<long>(value));
}

}  // namespace

HostScript::HostScript(const std::string& path,
                       const com::ComPtr<IPreprocessorControl>& preprocessor, Print print)
    : path_(path),
      preprocessor_(preprocessor),
      script_(host::create<IKelScriptObject2>("KelUtils.KelScript", kLibraryRemedy)),
      objects_(host::create<IKelObjects>("KelUtils.KelObjects", kLibraryRemedy)),
      extender_(
          host::create<IPreprocessorExtender>("KelUtils.PreprocessorExtender", kLibraryRemedy)),
      print_(std::make_shared<Print>(std::move(print))) {}

// The components are there when this begins, so the destructor ends their work if it fails.
HostScript::HostScript(const std::string& path, const std::vector<std::string>& arguments,
                       const com::ComPtr<IPreprocessorControl>& preprocessor, Print print)
    : HostScript(path, preprocessor, std::move(print)) {
    com::check(extender_->put_Preprocessor(preprocessor_.Get()), extender_);
    putObject(L"preprocessor", preprocessor_.Get());
    putObject(L"extender", extender_.Get());
    putObject(L"commandLine", makeCommandLine(arguments).Get());
    putObject(L"dialogue", makeDialogue(print_).Get());
    com::check(script_->put_Unattended(VARIANT_TRUE), script_);
    com::check(script_->put_Objects(objects_.Get()), script_);
    load();
    onRunStarted_ = find(L"onRunStarted");
    onLineStarted_ = find(L"onLineStarted");
    onError_ = find(L"onError");
    onRunEnded_ = find(L"onRunEnded");
}

// The preprocessor may outlive the script whose functions it calls.
HostScript::~HostScript() {
    extender_->SetHandlers(nullptr, nullptr);
}

void HostScript::putObject(const wchar_t* name, IDispatch* object) const {
    com::check(objects_->put_Item(com::Bstr(std::wstring_view(name)).get(), object), objects_);
}

void HostScript::load() {
    host::readScript(path_);  // tells why a file cannot be read
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    try {
        com::check(script_->LoadFile(com::Bstr(path_, CP_UTF8).get(), &isLoaded), script_);
    } catch (const com::Error&) {
        noticeError();
        if (!error_) throw;
        throw Failure(ExitCode::kFailed, placeAndMessage(*error_));
    }
    if (!com::isTrue(isLoaded)) throw Failure(ExitCode::kUsage, path_ + " cannot be read");
}

HostScript::Function HostScript::find(const std::wstring& name) const {
    com::ComPtr<IDispatch> control;
    com::check(script_->get_ScriptControl(&control), script_);
    const com::Variant found = com::LateBound(control).call(
        L"Eval", {com::Variant(std::wstring_view(L"typeof " + name + L" == 'function' ? " + name +
                                                 L" : null"))});
    if (found.type() != VT_DISPATCH) return std::nullopt;
    return com::LateBound(found.get().pdispVal);
}

void HostScript::reachLink(const com::ComPtr<IKelCommunicator>& link, Print print) {
    *print_ = std::move(print);
    putObject(kLinkName, link.Get());
}

void HostScript::leaveLink() {
    *print_ = nullptr;
    objects_->put_Item(com::Bstr(std::wstring_view(kLinkName)).get(), nullptr);
}

void HostScript::runStarted() {
    call(onRunStarted_, {});
}

void HostScript::lineStarted(const std::string& file, std::size_t line) {
    if (onLineStarted_) call(onLineStarted_, {text(file), number(line)});
}

void HostScript::errorFound(const std::string& file, std::size_t line, std::size_t column,
                            std::wstring_view message) {
    // It may be the failure of a word of the script's.
    noticeError();
    if (onError_) {
        call(onError_, {text(file), number(line), number(column), com::Variant(message)});
    }
}

void HostScript::runEnded(bool succeeded) {
    noticeError();
    call(onRunEnded_, {com::Variant(succeeded)});
}

void HostScript::call(const Function& function, std::initializer_list<com::Variant> arguments) {
    if (!function || error_) return;
    try {
        function->callItself(arguments);
    } catch (const com::Error& error) {
        noticeError();
        if (!error_) error_ = Diagnostic{path_, 0, 0, true, host::describe(error)};
        preprocessor_->Cancel();
    }
}

void HostScript::noticeError() {
    long line = 0;
    com::check(script_->get_LastErrorLine(&line), script_);
    if (line == 0 || error_) return;
    long column = 0;
    com::Bstr message;
    com::check(script_->get_LastErrorColumn(&column), script_);
    com::check(script_->get_LastErrorDescription(message.put()), script_);
    error_ = Diagnostic{path_, static_cast<std::size_t>(line), static_cast<std::size_t>(column),
                        true, com::narrow(message.view(), CP_UTF8)};
}

}  // namespace kel::kelrun
