#pragma once

#include <chrono>
#include <fstream>
#include <string>
#include <string_view>

#include "bench/instrument/line_output.h"

namespace kel::bench {

// A readable record of the dialogue: one line a piece with the seconds since the start, the
// direction ("<" from the host, ">" to it) and the bytes, those that are not printable escaped.
class Transcript {
public:
    // Without a file when the name is empty. Throws std::system_error when it cannot be
    // opened, and later when it cannot be written.
    explicit Transcript(const std::string& fileName);

    void received(Duration now, std::string_view bytes) { write(now, "< ", bytes); }
    void sent(Duration now, std::string_view bytes) { write(now, "> ", bytes); }
    void note(Duration now, std::string_view text) { write(now, "- ", text); }

private:
    void write(Duration now, std::string_view mark, std::string_view bytes);

    std::ofstream file_;
};

}  // namespace kel::bench
