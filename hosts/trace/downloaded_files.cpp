#include "hosts/trace/downloaded_files.h"

#include <algorithm>

#include "com/text.h"
#include "hosts/trace/arguments.h"

namespace kel::trace {
namespace {

constexpr std::size_t kPiece = 16384;

std::wstring fullPath(const std::wstring& path) {
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(
        GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

// The path of a file in a folder; empty for what is none there: another folder, a device, a stream
// of a file.
std::wstring pathIn(const std::wstring& folder, const std::wstring& name) {
    if (name.empty() || name.find_first_of(L"\\/:*?\"<>|") != name.npos) return {};
    const std::wstring start =
        folder.ends_with(L'\\') || folder.ends_with(L'/') ? folder : folder + L'\\';
    const std::wstring path = fullPath(start + name);
    return path == fullPath(start) + name ? path : std::wstring();
}

bool isSame(const FILETIME& left, const FILETIME& right) {
    return CompareFileTime(&left, &right) == 0;
}

}  // namespace

bool DownloadedFiles::Trace::operator==(const Trace& other) const {
    return size == other.size && isSame(created, other.created) && isSame(written, other.written);
}

DownloadedFiles::DownloadedFiles(TracedObject& object, const std::wstring& folder,
                                 const Json& names)
    : object_(object), folder_(folder) {
    if (!object.session().isRecording() || names.isNull()) return;
    for (const Json& name : names.array()) {
        const std::wstring text = fromText(name.text());
        if (!pathIn(folder_, text).empty()) before_[text] = traceOf(text);
    }
}

DownloadedFiles::Trace DownloadedFiles::traceOf(const std::wstring& name) const {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    const bool isThere =
        GetFileAttributesExW(pathIn(folder_, name).c_str(), GetFileExInfoStandard, &data) &&
        !(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
    if (!isThere) return {};
    return {data.ftCreationTime, data.ftLastWriteTime,
            static_cast<std::int64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow};
}

void DownloadedFiles::starts(const std::wstring& name) noexcept {
    tell(started_);
    started_ = name;
}

void DownloadedFiles::tellAll() noexcept {
    for (const auto& [name, trace] : before_)
        tell(name);
}

void DownloadedFiles::tell(const std::wstring& name) noexcept {
    const auto before = before_.find(name);
    if (before == before_.end()) return;
    const Trace now = traceOf(name);
    if (now.size < 0 || now == before->second) return;
    before->second = now;
    tellPieces(name, now.size);
}

void DownloadedFiles::tellPieces(const std::wstring& name, std::int64_t size) {
    Session& session = object_.session();
    const FilePiece whole{object_.name(), toText(name), size};
    std::optional<File> file;
    const bool isHeld = session.takeRoomForFile(size);
    const auto next = [&] {
        if (!file) file = File::open(pathIn(folder_, name));
        return file->read(kPiece);
    };
    if (!isHeld) {
        session.tellFile([&] {
            FilePiece piece = whole;
            Fingerprint fingerprint;
            for (std::string bytes = next(); !bytes.empty(); bytes = next())
                fingerprint.add(bytes);
            piece.fingerprint = fingerprint.text();
            return piece;
        });
        return;
    }
    std::int64_t offset = 0;
    do {
        session.tellFile([&] {
            FilePiece piece = whole;
            piece.offset = offset;
            piece.bytes = next();
            return piece;
        });
        offset += static_cast<std::int64_t>(kPiece);
    } while (offset < size);
}

std::string RestoredFiles::put(const FilePiece& piece) {
    try {
        if (piece.offset == 0) {
            const std::wstring path = pathIn(folder_, fromText(piece.name));
            if (path.empty()) return "it is no file of that folder";
            file_ = File::create(path);
            name_ = piece.name;
            offset_ = 0;
        }
        if (piece.name != name_ || piece.offset != offset_) return "its pieces have no order";
        file_.write(piece.bytes);
        offset_ += static_cast<std::int64_t>(piece.bytes.size());
        if (offset_ < piece.size) return {};
        file_ = {};
        name_.clear();
        return {};
    } catch (const com::Error& error) {
        return com::narrow(error.description(), CP_UTF8);
    }
}

}  // namespace kel::trace
