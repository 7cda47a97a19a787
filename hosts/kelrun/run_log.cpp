#include "hosts/kelrun/run_log.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "com/text.h"
#include "hosts/shared/error_text.h"

namespace kel::kelrun {
namespace {

com::FileHandle createFile(const std::string& path) {
    const HANDLE handle = CreateFileW(com::widen(path, CP_UTF8).c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (handle != INVALID_HANDLE_VALUE) return com::FileHandle(handle);
    const DWORD error = GetLastError();
    throw Failure(ExitCode::kUsage, path + " cannot be written: " + systemText(error));
}

// The user's time, and how far it is from that of the world.
std::string dateText() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    TIME_ZONE_INFORMATION zone{};
    const DWORD season = GetTimeZoneInformation(&zone);
    const LONG bias = zone.Bias + (season == TIME_ZONE_ID_DAYLIGHT   ? zone.DaylightBias
                                   : season == TIME_ZONE_ID_STANDARD ? zone.StandardBias
                                                                     : 0);
    char text[80];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d, UTC%c%02ld:%02ld", now.wYear,
                  now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, bias > 0 ? '-' : '+',
                  std::labs(bias) / 60, std::labs(bias) % 60);
    return text;
}

}  // namespace

LogFile::LogFile(const std::string& path) : file_(createFile(path)) {}

void LogFile::writeAt(std::uint64_t offset, std::string_view text) {
    if (isBroken_) return;
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    DWORD written = 0;
    const auto size = static_cast<DWORD>(text.size());
    isBroken_ =
        !WriteFile(file_.get(), text.data(), size, &written, &place) || written != text.size();
    size_ = std::max(size_, offset + written);
}

RunLog::RunLog(const Options& options, std::string scriptName, std::wstring_view source) {
    if (!options.transcript.empty()) transcriptFile_.emplace(options.transcript);
    if (!options.report.empty()) {
        reportFile_.emplace(options.report);
        report_.emplace(ReportHeader{options.script, dateText(),
                                     options.replay.empty() ? options.link : std::string("none"),
                                     connectionText(options), KEL_VERSION},
                        [this](std::uint64_t offset, std::string_view text) {
                            reportFile_->writeAt(offset, text);
                        });
    }
    if (!transcriptFile_ && !report_) return;
    transcript_.emplace([this] { return milliseconds(); },
                        [this](const Entry& entry) { tell(entry); }, std::move(scriptName),
                        SourceText(source));
}

void RunLog::ended(ExitCode code, std::string_view words) {
    if (transcript_) transcript_->ended(static_cast<int>(code), words);
}

std::vector<std::string> RunLog::incomplete() const {
    const bool hasLost = transcript_ && transcript_->isIncomplete();
    std::vector<std::string> names;
    if (transcriptFile_ && (hasLost || transcriptFile_->isBroken())) names.push_back("transcript");
    if (reportFile_ && (hasLost || reportFile_->isBroken())) names.push_back("report");
    return names;
}

void RunLog::tell(const Entry& entry) {
    if (transcriptFile_) transcriptFile_->append(jsonLine(entry));
    if (report_) report_->tell(entry);
}

long long RunLog::milliseconds() const {
    using std::chrono::duration_cast;
    return duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_)
        .count();
}

}  // namespace kel::kelrun
