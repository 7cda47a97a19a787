#include "script/link_host.h"

#include "com/port.h"
#include "com/text.h"
#include "com/variant.h"
#include "script/flat_collection.h"
#include "script/line_sink.h"

namespace kel::script {
namespace {

// Calls a handler; one that is not the preprocessor's own may start a nested run.
template <class Call>
void callHandler(RunState& state, const WordHandler& handler, Call call) {
    const com::ComPtr<IPreprocessorExtension> extension = handler.extension();
    if (handler.isForeign()) {
        const NestingScope nesting(state);
        com::check(call(extension.Get()), extension);
    } else {
        com::checkOwn(call(extension.Get()));
    }
}

}  // namespace

LinkHost::LinkHost(RunState& state, IPreprocessor2& sink, const WordHandlers& directives,
                   const WordHandlers& functions, Interviewer& interviewer, ErrorReport report)
    : state_(state),
      sink_(sink),
      directives_(directives),
      functions_(functions),
      interviewer_(interviewer),
      report_(std::move(report)) {}

void LinkHost::echo(std::string_view text) {
    const auto port = com::portOf(state_.communicator);
    if (port) com::check(port->Echo(com::Bstr(text).get()), port);
}

void LinkHost::endErrorReport() {
    const auto port = com::portOf(state_.communicator);
    if (!port) return;
    // An instrument that does not take the empty line has been told of already.
    VARIANT_BOOL written = VARIANT_FALSE;
    com::check(port->WriteString(com::Bstr(L"").get(), VARIANT_TRUE, 0, &written), port);
}

bool LinkHost::send(std::string_view line) {
    VARIANT_BOOL sent = VARIANT_FALSE;
    com::checkOwn(sink_.Send(com::Bstr(line).get(), &sent));
    return com::isTrue(sent);
}

void LinkHost::yield() {
    const auto port = com::portOf(state_.communicator);
    if (port) com::check(port->Sleep(1), port);
}

bool LinkHost::cancelRequested() {
    return state_.cancelRequested;
}

void LinkHost::clearCancelRequest() {
    state_.cancelRequested = false;
}

std::optional<std::size_t> LinkHost::findDirective(std::string_view name, std::size_t from) {
    return directives_.find(name, from);
}

DirectiveOutcome LinkHost::callDirective(std::size_t row, std::span<const std::string> parameters) {
    const com::ComPtr<IFlatCollection> collection = collect(parameters);
    if (!collection) return {};

    VARIANT_BOOL handled = VARIANT_FALSE;
    VARIANT_BOOL result = VARIANT_FALSE;
    const long number = directives_[row].number;
    callHandler(state_, directives_[row].handler, [&](IPreprocessorExtension* extension) {
        return extension->DirectiveHandler(state_.communicator.Get(), number, collection.Get(),
                                           &handled, &result);
    });
    return {com::isTrue(handled), com::isTrue(result)};
}

std::optional<std::size_t> LinkHost::findFunction(std::string_view name, std::size_t from) {
    return functions_.find(name, from);
}

FunctionOutcome LinkHost::callFunction(std::size_t row, std::span<const std::string> parameters) {
    const com::ComPtr<IFlatCollection> collection = collect(parameters);
    if (!collection) return {};

    com::Bstr value;
    VARIANT_BOOL handled = VARIANT_FALSE;
    VARIANT_BOOL result = VARIANT_FALSE;
    const long number = functions_[row].number;
    callHandler(state_, functions_[row].handler, [&](IPreprocessorExtension* extension) {
        return extension->FunctionHandler(state_.communicator.Get(), number, collection.Get(),
                                          value.put(), &handled, &result);
    });
    return {com::isTrue(handled), com::isTrue(result), com::narrow(value.get())};
}

Answers LinkHost::ask(const Question& question) {
    // An observer may have cancelled the run since the engine looked.
    if (state_.cancelRequested) return std::nullopt;
    return interviewer_.ask(question);
}

LocalTime LinkHost::localTime() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

std::string LinkHost::failureText() {
    return com::narrow(com::textOfCurrentException());
}

com::ComPtr<IFlatCollection> LinkHost::collect(std::span<const std::string> parameters) {
    try {
        return FlatCollection::of(parameters);
    } catch (const std::bad_alloc&) {
        report_("Unable to create collection object", {});
        return nullptr;
    }
}

}  // namespace kel::script
