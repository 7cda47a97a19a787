#pragma once
// What a trace file tells, one event a line.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "hosts/model/json.h"

namespace kel::trace {

using hosts::Json;

// Where in a script the host is; line 0 when it has not told.
struct Position {
    std::u16string file;
    std::int64_t line = 0;

    bool operator==(const Position&) const = default;
};

// A call on a traced object. Objects are named by their kind and a number: link1, serial2.
struct Call {
    std::string object;
    std::string method;
    Json::Array in;
    Position position;
};

struct CallStarted : Call {
    std::int64_t number = 0;
    std::string interfaceName;
    // False for calls that depend on timing or on the run: told, but not compared in a replay.
    bool isCompared = true;
};

// The error info that a failing call published.
struct PublishedError {
    std::u16string description;
    std::u16string source;
    std::string interfaceId;
};

struct CallEnded {
    std::int64_t number = 0;
    std::uint32_t result = 0;  // the HRESULT
    Json::Array out = {};
    std::optional<PublishedError> error = {};
    std::optional<std::uint32_t> lastError = {};  // of calls that answer by it
};

// The echo showed a text: of the instrument, or of a caller of Echo.
struct Shown {
    std::string object;
    std::u16string text;
    bool isByCaller = false;
};

// The link called the host's preprocessor; what the script does follows, up to the end.
struct CallbackStarted {
    std::string object;
    std::u16string script;
};
struct CallbackEnded {
    std::uint32_t result = 0;
};

// A traced object told one of its sinks of an event; what the sink does follows, up to its answer.
struct EventFired {
    std::string object;
    std::int64_t sink = 0;    // the sink that was advised as the first, second... of the object
    std::int64_t member = 0;  // the event's dispatch identifier
    Json::Array in;
    bool isQuestion = false;  // a value was asked for
};
struct EventAnswered {
    std::uint32_t result = 0;
    Json::Array out = {};  // the value, where one was asked for and given

    bool operator==(const EventAnswered&) const = default;
};

// A call left a file in the folder that it was given; what is in it, in pieces. A file whose bytes
// are not held has one piece, without any.
struct FilePiece {
    std::string object;
    std::u16string name;
    std::int64_t size = 0;  // of the whole file
    std::int64_t offset = 0;
    std::string bytes = {};
    std::optional<std::string> fingerprint = {};  // in the place of the bytes
};

struct Event {
    double time = 0;  // milliseconds since the start of the recording
    std::variant<CallStarted, CallEnded, Shown, CallbackStarted, CallbackEnded, EventFired,
                 EventAnswered, FilePiece>
        what;
    // Calls nest within a lane. Those of the session's thread have the lane 0; calls of other
    // threads have others, as many as there are at the same time.
    std::int64_t lane = 0;
};

// One line, without its end.
std::string toLine(const Event& event);

// Throws std::invalid_argument, with a reason, for a line that toLine() does not write.
Event fromLine(std::string_view line);

}  // namespace kel::trace
