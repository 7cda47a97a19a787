#include "hosts/kelrun/transcript_file.h"

#include <utility>

#include "com/text.h"
#include "hosts/shared/error_text.h"
#include "hosts/shared/model/failure.h"

namespace kel::kelrun {
namespace {

com::FileHandle create(const std::string& path) {
    const HANDLE handle = CreateFileW(com::widen(path, CP_UTF8).c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (handle != INVALID_HANDLE_VALUE) return com::FileHandle(handle);
    const DWORD error = GetLastError();
    throw Failure(ExitCode::kUsage, path + " cannot be written: " + systemText(error));
}

}  // namespace

TranscriptFile::TranscriptFile(const std::string& path, std::string scriptName,
                               std::wstring_view source)
    : file_(create(path)),
      transcript_([this] { return milliseconds(); }, [this](std::string_view line) { write(line); },
                  std::move(scriptName), host::SourceText(source)) {}

void TranscriptFile::write(std::string_view line) {
    if (broken_) return;
    DWORD written = 0;
    const auto size = static_cast<DWORD>(line.size());
    broken_ =
        !WriteFile(file_.get(), line.data(), size, &written, nullptr) || written != line.size();
}

long long TranscriptFile::milliseconds() const {
    using std::chrono::duration_cast;
    return duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_)
        .count();
}

}  // namespace kel::kelrun
