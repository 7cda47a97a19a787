#include "dialogs/connect/session_store.h"

#include <vector>

#include "com/text.h"
#include "settings/settings_key.h"
#include "settings/settings_list.h"
#include "settings/vocabulary.h"

namespace kel::connect {

using settings::SettingsKey;

RememberedSession loadSession(const std::wstring& application) {
    namespace store = settings::new_session;
    RememberedSession session;
    const auto key = SettingsKey::forReading(store::key(com::narrow(application)));
    DWORD number = 0;
    if (!key.readNumber(store::kOption, number)) return session;
    session.option = number;
    if (key.readNumber(store::kLastConnection, number)) session.lastConnection = number;
    return session;
}

void saveSession(const std::wstring& application, SessionOption option) {
    namespace store = settings::new_session;
    const RememberedSession session = remember(option);
    const auto key = SettingsKey::forWriting(store::key(com::narrow(application)));
    if (!key.writeNumber(store::kOption, *session.option)) return;
    if (session.lastConnection) key.writeNumber(store::kLastConnection, *session.lastConnection);
}

RememberedPort loadPort(const std::wstring& application) {
    namespace store = settings::serial;
    const auto key = SettingsKey::forReading(store::key(com::narrow(application)));
    RememberedPort port;
    const auto name = key.readText(store::kPort);
    if (!name) return port;
    port.name = shownName(com::widen(*name));
    if (const auto rate = key.readText(store::kBaud)) port.rate = listedRate(*rate);
    return port;
}

void savePort(const std::wstring& application, const RememberedPort& port) {
    namespace store = settings::serial;
    const auto key = SettingsKey::forWriting(store::key(com::narrow(application)));
    if (settings::WriteStringSetting(key, store::kPort, com::narrow(port.name)))
        settings::WriteStringSetting(key, store::kBaud, std::to_string(port.rate));
}

RememberedFiles loadFiles(const std::wstring& application, bool usesWorkspaces) {
    const std::string name = com::narrow(application);
    std::vector<std::wstring> paths;
    for (const auto& entry :
         settings::readList(settings::recent_files::key(name), settings::recent_files::kFields)) {
        paths.push_back(com::widen(entry.front()));
    }
    DWORD isUsed = usesWorkspaces ? 1 : 0;
    SettingsKey::forReading(settings::open_file::key(name))
        .readNumber(settings::open_file::kUseWorkspaces, isUsed);
    return {.recent = ui::RecentPaths(com::sameName, paths), .usesWorkspaces = isUsed != 0};
}

void saveFiles(const std::wstring& application, const RememberedFiles& files) {
    const std::string name = com::narrow(application);
    std::vector<settings::ListEntry> entries;
    // One too long to be read again would hide all that come after it.
    for (const std::wstring& path : files.recent.paths()) {
        std::string text = com::narrow(path);
        if (text.size() + 1 < settings::kLongestText) entries.push_back({std::move(text)});
    }
    settings::writeList(settings::recent_files::key(name), settings::recent_files::kFields,
                        entries);
    SettingsKey::forWriting(settings::open_file::key(name))
        .writeNumber(settings::open_file::kUseWorkspaces, files.usesWorkspaces ? 1 : 0);
}

}  // namespace kel::connect
