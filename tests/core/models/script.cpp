// What the parts of the script engine give that no transcript of a run shows.
#include <map>

#include "script/engine/locator.h"
#include "script/engine/prepared_answers.h"
#include "script/engine/program.h"
#include "tests/core/models/subject.h"
#include "tests/core/script/recording_host.h"

namespace kel::script {
namespace {

using test::shown;
using test::Subject;
using test::Words;

// A plain line costs this much besides its text; 32-bit processes have to hold long scripts.
static_assert(sizeof(Record) <= 16);

// Pieces with bars between, each as "times*text", where "$" is the number of the repetition: how
// many lines are sent and errors shown, how many things a check finds, how many variables there
// are. Where time grew faster than the text, or the stack with it, none would come to an end.
const Subject kLarge("large script", [](Words& words) {
    std::istringstream pieces(words.line());
    std::string script;
    for (std::string piece; std::getline(pieces, piece, '|');) {
        const std::string text = piece.substr(piece.find('*') + 1);
        const std::size_t dollar = text.find('$');
        for (unsigned long i = 0, times = std::stoul(piece); i < times; ++i) {
            script += text.substr(0, dollar);
            if (dollar != text.npos) script += std::to_string(i) + text.substr(dollar + 1);
        }
    }
    RecordingHost host;
    host.session.run(script);
    std::map<char, int> entries;
    std::istringstream lines(host.transcript);
    for (std::string line; std::getline(lines, line);)
        ++entries[line[0]];
    return shown(entries['"'], "sent", entries['!'], "errors", host.session.check(script).size(),
                 "found", host.variables.size(), "variables");
});

// Answers as "name=text ...", of which that for the depth is shown; then for each control its kind
// (check, select, input), caption, first result, variable and choices.
const Subject kPrepared("prepared answers", [](Words& words) {
    const TextRules rules;
    PreparedAnswers answers(rules);
    Question question;
    std::vector<Words> parts = words.parts();
    for (const std::string& answer : parts[0].all())
        answers.set(answer.substr(0, answer.find('=')), answer.substr(answer.find('=') + 1));
    for (Words& part : parts) {
        if (&part == parts.data()) continue;
        Control& control = question.controls.emplace_back();
        control.kind = part.take<ControlKind>();
        for (std::string* text : {&control.caption, &control.initial, &control.target})
            *text = part.text();
        control.choices = part.all();
    }
    std::string missing;
    const Answers given = answers.answer(question, missing);
    const std::string* depth = answers.find("DEPTH");
    const std::string kept = depth ? "depth " + *depth + ", " : "";
    return kept + (given ? shown(*given) : "missing: " + missing);
});

// Places in a text, asked for in this order.
const Subject kPlaces("places in a script", [](const std::string& text,
                                               const std::vector<std::size_t>& offsets) {
    Locator locator(text);
    std::string places;
    for (const std::size_t offset : offsets) {
        const Position position = locator.locate(text.data() + offset);
        places += std::to_string(position.line) + ":" + std::to_string(position.column) + " ";
    }
    return places;
});

}  // namespace
}  // namespace kel::script
