#include "hosts/trace/recorder.h"

#include <cstdio>

#include "hosts/trace/model/trace_text.h"
#include "hosts/trace/waiting.h"

namespace kel::trace {
namespace {

std::string utcNow() {
    SYSTEMTIME now;
    GetSystemTime(&now);
    char text[40];
    std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02uZ", now.wYear, now.wMonth,
                  now.wDay, now.wHour, now.wMinute, now.wSecond);
    return text;
}

}  // namespace

Recorder::Recorder(const std::wstring& path) : file_(File::create(path)), started_(milliseconds()) {
    file_.write(headerLine(utcNow()) + "\n");
}

void Recorder::write(Event event) {
    event.time = milliseconds() - started_;
    file_.write(toLine(event) + "\n");
}

}  // namespace kel::trace
