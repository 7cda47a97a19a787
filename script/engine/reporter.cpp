#include "script/engine/reporter.h"

#include <utility>

namespace kel::script {

Reporter::Script::Script(Reporter& reporter, std::string_view text, std::string_view name)
    : reporter_(reporter),
      outer_(reporter.running_),
      name_(name),
      locator_(text),
      here_(text.data()) {
    if (outer_ == nullptr) reporter_.diagnostics_.clear();
    reporter_.running_ = this;
    ++reporter_.depth_;
}

Reporter::Script::~Script() {
    --reporter_.depth_;
    reporter_.running_ = outer_;
}

bool Reporter::errorAt(const char* where, std::string_view message,
                       std::initializer_list<std::string_view> parts) {
    std::string whole(message);
    for (const std::string_view part : parts)
        whole.append(1, ' ').append(part);
    record(where, std::move(whole));
    if (running_ != nullptr) moveTo(where);  // where showing it may fail

    host_.echo("\r\nERROR: ");
    host_.echo(message);
    for (const std::string_view part : parts)
        host_.echo(std::string(1, ' ').append(part));
    host_.endErrorReport();
    return false;
}

bool Reporter::error(std::string_view message, std::initializer_list<std::string_view> parts) {
    return errorAt(running_ == nullptr ? nullptr : running_->here_, message, parts);
}

bool Reporter::note(std::string message) {
    record(running_->here_, std::move(message));
    return false;
}

bool Reporter::noteUnlessReported(std::size_t countBefore, std::string message) {
    if (count_ == countBefore) note(std::move(message));
    return false;
}

void Reporter::record(const char* where, std::string message) {
    Diagnostic diagnostic;
    diagnostic.message = std::move(message);
    if (running_ != nullptr) {
        const Position position = running_->locator_.locate(where);
        diagnostic.script = running_->name_;
        diagnostic.line = position.line;
        diagnostic.column = position.column;
    }
    ++count_;
    diagnostics_.push_back(diagnostic);
    observer_.diagnosed(diagnostic);
}

}  // namespace kel::script
