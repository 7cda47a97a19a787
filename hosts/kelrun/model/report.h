#pragma once
// The report of a run for people: one page of HTML that needs nothing beside it.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "hosts/kelrun/model/transcript.h"

namespace kel::kelrun {

// What stands above the table. Texts are UTF-8.
struct ReportHeader {
    std::string script;
    std::string date;
    std::string link;
    std::string connection;
    std::string version;  // of kelrun
};

// The page is written as the run goes, and is whole after every call. No text of an instrument or a
// script becomes markup, and none can hide: characters that control or cannot be seen are shown by
// signs or names.
class Report {
public:
    // Puts a text at an offset of the file, over what stands there.
    using WriteAt = std::function<void(std::uint64_t offset, std::string_view text)>;

    Report(const ReportHeader& header, WriteAt writeAt);

    // Adds a row. A result also goes to the head of the page.
    void tell(const Entry& entry);

private:
    void append(std::string text);

    WriteAt writeAt_;
    std::uint64_t resultPlace_ = 0;
    std::uint64_t end_ = 0;  // where the next row goes
    std::string file_;       // of the row before
};

}  // namespace kel::kelrun
