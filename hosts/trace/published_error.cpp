#include "hosts/trace/published_error.h"

#include "com/text.h"
#include "hosts/trace/arguments.h"

namespace kel::trace {

PublishedError publishedError(IErrorInfo& info) {
    com::Bstr description;
    com::Bstr source;
    GUID identifier{};
    com::check(info.GetDescription(description.put()));
    com::check(info.GetSource(source.put()));
    com::check(info.GetGUID(&identifier));
    return {toText(description.view()), toText(source.view()),
            com::narrow(com::guidText(identifier))};
}

void publishAgain(HRESULT result, const std::optional<PublishedError>& error) {
    SetErrorInfo(0, nullptr);
    if (!error) return;
    IID identifier{};
    com::check(IIDFromString(com::widen(error->interfaceId, CP_UTF8).c_str(), &identifier));
    com::publish(result, fromText(error->description), identifier, fromText(error->source).c_str());
}

}  // namespace kel::trace
