#pragma once
// What is called on a link, as the trace link records it.

#include <filesystem>
#include <fstream>
#include <string>

#include "com/text.h"
#include "hosts/trace/KelTrace.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/support/library.h"

namespace kel::test {

// One at a time: a process has one session.
class TracedCalls {
public:
    explicit TracedCalls(IKelCommunicator* inner) {
        com::check(session_->Record(com::Bstr(path_.wstring()).get()), session_);
        com::check(session_->Attach(inner, &link_), session_);
    }
    ~TracedCalls() { std::filesystem::remove(path_); }
    TracedCalls(const TracedCalls&) = delete;
    TracedCalls& operator=(const TracedCalls&) = delete;

    IKelCommunicator* link() const { return link_.Get(); }

    // The methods in their order, from a method on, and the end of the session.
    std::string takeFrom(const std::string& first) {
        com::check(session_->Close(), session_);
        std::string methods;
        std::ifstream file(path_);
        constexpr std::string_view kMethod = "\"method\":\"";
        for (std::string line; std::getline(file, line);) {
            const std::size_t begin = line.find(kMethod);
            if (begin == std::string::npos) continue;
            const std::size_t name = begin + kMethod.size();
            const std::string method = line.substr(name, line.find('"', name) - name);
            if (!methods.empty() || method == first) methods += method + "\n";
        }
        return methods;
    }

private:
    const std::filesystem::path path_ =
        std::filesystem::temp_directory_path() /
        ("kel_calls_" + std::to_string(GetCurrentProcessId()) + ".trace");
    com::ComPtr<ITraceSession> session_ = kelTrace().create<ITraceSession>(__uuidof(TraceSession));
    com::ComPtr<IKelCommunicator> link_;
};

}  // namespace kel::test
