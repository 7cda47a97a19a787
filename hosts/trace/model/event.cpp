#include "hosts/trace/model/event.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "hosts/trace/model/hexadecimal.h"

namespace kel::trace {
namespace {

// Microseconds are all that the clock is good for. A time that no run can have stays as it was
// read.
double inMicroseconds(double milliseconds) {
    constexpr double kLongest = 1e12;
    if (!(std::abs(milliseconds) < kLongest)) return milliseconds;
    return std::round(milliseconds * 1000) / 1000;
}

Json hexadecimal(std::uint32_t code) {
    char text[11];
    std::snprintf(text, sizeof text, "0x%08lX", static_cast<unsigned long>(code));
    return text;
}

std::uint32_t codeOf(const Json& json) {
    const std::string text = json.utf8Text();
    std::uint32_t code = 0;
    const char* const end = text.data() + text.size();
    if (!text.starts_with("0x") || std::from_chars(text.data() + 2, end, code, 16).ptr != end) {
        throw std::invalid_argument("A result code is not hexadecimal");
    }
    return code;
}

// Adds the members of an event to an object.
struct Teller {
    Json::Object& members;

    void operator()(const CallStarted& call) const {
        members.push_back({"call", call.number});
        members.push_back({"object", call.object});
        members.push_back({"interface", call.interfaceName});
        members.push_back({"method", call.method});
        members.push_back({"in", call.in});
        if (!call.isCompared) members.push_back({"compared", false});
        if (call.position.line == 0) return;
        members.push_back({"file", call.position.file});
        members.push_back({"line", call.position.line});
    }
    void operator()(const CallEnded& call) const {
        members.push_back({"return", call.number});
        members.push_back({"result", hexadecimal(call.result)});
        members.push_back({"out", call.out});
        if (call.error) {
            members.push_back({"error", Json::Object{{"description", call.error->description},
                                                     {"source", call.error->source},
                                                     {"interface", call.error->interfaceId}}});
        }
        if (call.lastError) {
            members.push_back({"lastError", *call.lastError});
        }
    }
    void operator()(const Shown& shown) const {
        members.push_back({shown.isByCaller ? "echoed" : "received", shown.text});
        members.push_back({"object", shown.object});
    }
    void operator()(const CallbackStarted& callback) const {
        members.push_back({"script", callback.script});
        members.push_back({"object", callback.object});
    }
    void operator()(const CallbackEnded& callback) const {
        members.push_back({"scriptEnd", hexadecimal(callback.result)});
    }
    void operator()(const EventFired& event) const {
        members.push_back({"event", event.member});
        members.push_back({"object", event.object});
        members.push_back({"sink", event.sink});
        members.push_back({"in", event.in});
        if (event.isQuestion) members.push_back({"asks", true});
    }
    void operator()(const EventAnswered& answer) const {
        members.push_back({"eventEnd", hexadecimal(answer.result)});
        members.push_back({"out", answer.out});
    }
    void operator()(const FilePiece& piece) const {
        members.push_back({"leaves", piece.name});
        members.push_back({"object", piece.object});
        members.push_back({"size", piece.size});
        if (piece.fingerprint) {
            members.push_back({"fingerprint", *piece.fingerprint});
            return;
        }
        members.push_back({"offset", piece.offset});
        members.push_back({"bytes", toHexadecimal(piece.bytes)});
    }
};

CallStarted callStarted(const Json& json) {
    CallStarted call;
    call.number = json.at("call").integer();
    call.object = json.at("object").utf8Text();
    call.interfaceName = json.at("interface").utf8Text();
    call.method = json.at("method").utf8Text();
    call.in = json.at("in").array();
    call.isCompared = json.find("compared") == nullptr;
    if (const Json* file = json.find("file")) {
        call.position = {file->text(), json.at("line").integer()};
    }
    return call;
}

CallEnded callEnded(const Json& json) {
    CallEnded call;
    call.number = json.at("return").integer();
    call.result = codeOf(json.at("result"));
    call.out = json.at("out").array();
    if (const Json* error = json.find("error")) {
        call.error = {error->at("description").text(), error->at("source").text(),
                      error->at("interface").utf8Text()};
    }
    if (const Json* code = json.find("lastError")) {
        call.lastError = static_cast<std::uint32_t>(code->integer());
    }
    return call;
}

Shown shown(const Json& json, const Json& text, bool isByCaller) {
    return {json.at("object").utf8Text(), text.text(), isByCaller};
}

EventFired eventFired(const Json& json) {
    return {json.at("object").utf8Text(), json.at("sink").integer(), json.at("event").integer(),
            json.at("in").array(), json.find("asks") != nullptr};
}

FilePiece filePiece(const Json& json) {
    FilePiece piece{json.at("object").utf8Text(), json.at("leaves").text(),
                    json.at("size").integer()};
    if (const Json* fingerprint = json.find("fingerprint")) {
        piece.fingerprint = fingerprint->utf8Text();
    } else {
        piece.offset = json.at("offset").integer();
        piece.bytes = fromHexadecimal(json.at("bytes").text());
    }
    return piece;
}

}  // namespace

std::string toLine(const Event& event) {
    Json::Object members{{"t", inMicroseconds(event.time)}};
    std::visit(Teller{members}, event.what);
    if (event.lane != 0) members.push_back({"lane", event.lane});
    return write(members);
}

Event fromLine(std::string_view line) {
    const Json json = hosts::readJson(line);
    Event event;
    event.time = json.at("t").number();
    if (const Json* lane = json.find("lane")) event.lane = lane->integer();
    if (json.find("call")) {
        event.what = callStarted(json);
    } else if (json.find("return")) {
        event.what = callEnded(json);
    } else if (const Json* received = json.find("received")) {
        event.what = shown(json, *received, false);
    } else if (const Json* echoed = json.find("echoed")) {
        event.what = shown(json, *echoed, true);
    } else if (const Json* script = json.find("script")) {
        event.what = CallbackStarted{json.at("object").utf8Text(), script->text()};
    } else if (json.find("event")) {
        event.what = eventFired(json);
    } else if (const Json* answer = json.find("eventEnd")) {
        event.what = EventAnswered{codeOf(*answer), json.at("out").array()};
    } else if (json.find("leaves")) {
        event.what = filePiece(json);
    } else {
        event.what = CallbackEnded{codeOf(json.at("scriptEnd"))};
    }
    return event;
}

}  // namespace kel::trace
