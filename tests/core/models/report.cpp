// What kelrun tells of a run: its diagnostics, its transcript, and the page that people read.
#include <algorithm>
#include <memory>
#include <utility>

#include "hosts/kelrun/model/report.h"
#include "hosts/kelrun/model/transcript.h"
#include "hosts/model/unicode.h"
#include "hosts/shared/model/diagnostic.h"
#include "tests/core/models/subject.h"
#include "tests/support/project_file.h"
#include "tests/support/temporary_file.h"

namespace kel::kelrun {
namespace {

using test::Subject;
using test::Words;

// "file line column error MESSAGE", or a warning, each as it is told, and all of them in JSON.
const Subject kDiagnostics("diagnostics", [](Words& words) {
    std::vector<host::Diagnostic> all;
    std::string told;
    for (Words& part : words.parts()) {
        all.push_back({part.text(), part.number<std::size_t>(), part.number<std::size_t>(),
                       part.text() == "error", part.rest()});
        told += placeAndMessage(all.back()) + "; " + compilerText(all.back()) + "; ";
    }
    return told + toJson(all);
});

// "line FILE NUMBER", "sent TEXT", "shown TEXT", "error FILE LINE COLUMN TEXT" and "ended CODE
// TEXT" give what they add to the transcript; "pieces TEXT" what it adds however it is cut, after
// two errors. "row" gives the last row of the page, "head" the result that stands in front, "page"
// whether it is that of a file. The clock goes on by itself.
class RunPlayer {
public:
    std::string play(Words& words) {
        const std::string act = words.text();
        if (act == "line") startLine(words);
        if (act == "sent") transcript_.sent(words.rest());
        if (act == "shown") transcript_.shown(hosts::toUtf16(words.rest()));
        if (act == "flood") transcript_.shown(std::u16string(5000, u'\xD800'));
        if (act == "error") findError(words);
        if (act == "ended") end(words);
        if (act == "clock") now_ = words.number<long long>();
        if (act == "pieces") tellInPieces(words.rest());
        if (act == "row") return row();
        if (act == "head") return head();
        if (act == "page")
            return page_ == test::TemporaryFile::bytesOf(test::projectFile(words.text()))
                       ? "the same"
                       : page_;
        const std::string told = std::exchange(told_, {});
        return told.size() < 1000 ? told : std::to_string(told.size()) + " bytes";
    }

private:
    void startLine(Words& words) {
        const std::string file = words.text();
        transcript_.lineStarted(file, words.number<std::size_t>());
    }
    void findError(Words& words) {
        const std::string file = words.text();
        const auto line = words.number<std::size_t>(), column = words.number<std::size_t>();
        transcript_.errorFound(file, line, column, hosts::toUtf16(words.rest()));
    }
    void end(Words& words) {
        const int code = words.number();
        transcript_.ended(code, words.rest());
    }
    void tellInPieces(const std::string& utf8) {
        const std::u16string text = hosts::toUtf16(utf8);
        std::string whole;
        for (std::size_t size = text.size(); size > 0; --size) {
            now_ = 0;
            transcript_.errorFound("a.kel", 3, 1, u"The line could not be sent");  // never shown
            transcript_.errorFound("a.kel", 4, 1, u"Not found: x");
            for (std::size_t i = 0; i < text.size(); i += size)
                transcript_.shown(std::u16string_view(text).substr(i, size));
            transcript_.ended(0, "");
            const std::string told = std::exchange(told_, {});
            if (size == text.size()) whole = told;
            if (told != whole) whole += "in pieces of " + std::to_string(size) + ": " + told;
        }
        told_ = whole;
    }
    // Of any result there is a page that is whole.
    void tell(const Entry& entry) {
        report_.tell(entry);
        const std::string_view tail = "</tr>\n</table>\n</body>\n</html>\n";
        if (!page_.ends_with(tail) || page_.find("</html>") != page_.size() - 8)
            told_ += "a broken page: " + page_;
        told_ += jsonLine(entry);
    }

    // Without its time and its end.
    std::string row() const {
        const std::size_t start = page_.find("<td>", page_.rfind("<tr class"));
        const std::size_t cells = page_.find("<td>", start + 4);
        return page_.substr(cells, page_.rfind("</tr>") - cells);
    }
    std::string head() const {
        const std::size_t start = page_.find("<dt>Result");
        const std::string part = page_.substr(start, page_.find("</dl>") - start);
        return part.substr(0, part.find_last_not_of(" \n") + 1);
    }

    std::string told_, page_;
    long long now_ = 0;
    Report report_{
        {"a<b>.kel", "2031-02-03 04:05:06, UTC+00:00", "Some.Link", "COM3, 9600 baud", "1.0.0"},
        [this](std::uint64_t offset, std::string_view text) {
            page_.resize(std::max<std::size_t>(page_.size(), offset + text.size()));
            page_.replace(offset, text.size(), text);
        }};
    Transcript transcript_{[this] { return now_ += 1501; },
                           [this](const Entry& entry) { tell(entry); }, "a<b>.kel",
                           host::SourceText(L"ver\n#MSGBOX \"<b>\" & '\n%nosuch")};
};

const Subject kRun("run", [] {
    return [player = std::make_shared<RunPlayer>()](Words& words) { return player->play(words); };
});

}  // namespace
}  // namespace kel::kelrun
