#include "script/event_observer.h"

#include "interfaces/KelUtils.h"
#include "script/flat_collection.h"

namespace kel::script {
namespace {

// The members of _IPreprocessorEvents.
enum EventMember : DISPID {
    kRunStarted = 1,
    kRunEnded,
    kLineStarted,
    kLineSent,
    kDirectiveStarted,
    kVariableSet,
    kErrorFound
};

com::Variant number(std::size_t value) {
    return com::Variant(static_cast<long>(value));
}

}  // namespace

void EventObserver::runStarted(std::string_view script, std::size_t depth) {
    scripts_.emplace_back(script);
    if (!events_.hasSinks()) return;
    events_.fire(kRunStarted, {com::Variant(script), number(depth)});
}

void EventObserver::runEnded(std::string_view script, std::size_t depth, bool result) {
    scripts_.pop_back();
    if (!events_.hasSinks()) return;
    events_.fire(kRunEnded, {com::Variant(script), number(depth), com::Variant(result)});
}

void EventObserver::lineStarted(std::size_t line) {
    if (!events_.hasSinks()) return;
    events_.fire(kLineStarted, {com::Variant(std::string_view(scripts_.back())), number(line)});
}

void EventObserver::lineSent(std::string_view text) {
    if (events_.hasSinks()) events_.fire(kLineSent, {com::Variant(text)});
}

void EventObserver::directiveStarted(std::string_view name,
                                     std::span<const std::string> parameters) {
    if (!events_.hasSinks()) return;
    com::ComPtr<FlatCollection> collection = FlatCollection::of(parameters);
    events_.fire(
        kDirectiveStarted,
        {com::Variant(name), com::Variant(static_cast<IFlatCollection*>(collection.Get()))});
}

void EventObserver::variableSet(std::string_view name, std::string_view value) {
    if (events_.hasSinks()) events_.fire(kVariableSet, {com::Variant(name), com::Variant(value)});
}

void EventObserver::diagnosed(const Diagnostic& diagnostic) {
    if (!events_.hasSinks()) return;
    events_.fire(kErrorFound,
                 {com::Variant(std::string_view(diagnostic.script)), number(diagnostic.line),
                  number(diagnostic.column), com::Variant(std::string_view(diagnostic.message))});
}

}  // namespace kel::script
