#pragma once
// Every key and value of the store, spelt as they are kept. Keys are named by their path below
// kRoot; port numbers and baud rates are kept as texts.

#include <string>
#include <string_view>

namespace kel::settings {

// Below HKEY_CURRENT_USER.
inline constexpr char kRoot[] = "Software\\Kelvra\\Components\\";

// The part of a dialog's key that is for one host program; each program has a name of its own,
// which may be empty.
inline std::string ofApplication(std::string_view dialog, std::string_view application,
                                 std::string_view rest = {}) {
    return std::string(dialog).append("\\App_").append(application).append(rest);
}

namespace serial {
inline std::string key(std::string_view application) {
    return ofApplication("SerialConnect", application, "\\Settings");
}
inline constexpr char kPort[] = "Port";
inline constexpr char kBaud[] = "Baud";
}  // namespace serial

// A list, the same for all host programs.
namespace connections {
inline constexpr char kKey[] = "KelGateConnect\\Connections";
inline constexpr const char* kFields[] = {"Name", "Address", "Port"};
}  // namespace connections

namespace new_session {
inline std::string key(std::string_view application) {
    return ofApplication("NewSessionDialog", application);
}
inline constexpr char kOption[] = "Option";
inline constexpr char kLastConnection[] = "LastConnection";
}  // namespace new_session

namespace open_file {
inline std::string key(std::string_view application) {
    return ofApplication("OpenDataFileDialog", application, "\\Settings");
}
inline constexpr char kUseWorkspaces[] = "Use Workspaces";
}  // namespace open_file

// A list.
namespace recent_files {
inline std::string key(std::string_view application) {
    return ofApplication("OpenDataFileDialog", application, "\\RecentFiles");
}
inline constexpr const char* kFields[] = {"FileName"};
}  // namespace recent_files

namespace firmware {
inline constexpr char kKey[] = "UploadFirmwareDialog";
inline constexpr char kLastUsedFile[] = "LastUsedFile";
}  // namespace firmware

namespace recorder {
inline constexpr char kKey[] = "Recorder";
inline constexpr char kDownloadFolder[] = "DownloadFolder";
// Spelt so since the first version: what users have stored must be found.
inline constexpr char kDownloadRate[] = "DownoadRate";
}  // namespace recorder

}  // namespace kel::settings
