// The download itself.
#include <algorithm>

#include "bench/link/access/partial_file.h"
#include "bench/link/access/recorder_access.h"
#include "bench/link/model/file_name.h"
#include "com/text.h"
#include "com/variant.h"

namespace kel::bench {
namespace {

constexpr DISPID kDownloadProgress = 2;
constexpr DISPID kConfirmReplace = 4;
constexpr DISPID kFileStarted = 5;

std::string nameOf(IRecorderFile* file) {
    com::Bstr name;
    com::check(file->get_Name(name.put()), file);
    return com::narrow(name.view());
}

}  // namespace

// Entries of the last listing: each may be met once, for names may be alike.
std::vector<CardEntry> RecorderAccess::entriesOf(ICollection* selection) const {
    std::vector<CardEntry> listed = state_->listing();
    std::vector<CardEntry> entries;
    long count = 0;
    com::check(selection->get_Count(&count), selection);
    for (long i = 0; i < count; ++i) {
        com::Variant item;
        com::check(selection->get_Item(com::Variant(i).get(), item.put()), selection);
        com::ComPtr<IRecorderFile> file;
        if (item.type() != VT_DISPATCH || !item.get().pdispVal ||
            FAILED(item.get().pdispVal->QueryInterface(IID_PPV_ARGS(&file)))) {
            throw com::Error(E_INVALIDARG, L"The selection holds something that is no file");
        }
        LONGLONG size = 0;
        com::check(file->get_Size(&size), file);
        const std::string name = nameOf(file.Get());
        const auto found = std::find_if(listed.begin(), listed.end(), [&](const CardEntry& entry) {
            return entry.name == name && entry.size == size;
        });
        if (found == listed.end()) {
            throw com::Error(E_INVALIDARG, L"The card has no file '" + com::widen(name) + L"'");
        }
        entries.push_back(std::move(*found));
        listed.erase(found);
    }
    return entries;
}

bool RecorderAccess::download(CardDialogue& card, const std::vector<CardEntry>& entries,
                              const std::wstring& folder) {
    std::int64_t total = 0;
    for (const CardEntry& entry : entries)
        total += entry.size;
    std::int64_t done = 0;
    const auto proceed = [&](std::int64_t bytes) {
        if (state_->isAborted) throw Aborted();
        done += bytes;
        const Progress progress = progressOf(done, total);
        events_.fire(kDownloadProgress, {com::Variant(static_cast<long>(progress.done)),
                                         com::Variant(static_cast<long>(progress.total))});
    };

    proceed(0);
    bool isComplete = true;
    for (const CardEntry& entry : entries) {
        const std::wstring name = com::widen(entry.name);
        const std::wstring path = folder + name;
        if (!isFileName(entry.name) || path.size() >= MAX_PATH) {
            say(L"No file can be named '" + name + L"'");
            isComplete = false;
            proceed(entry.size);
            continue;
        }
        events_.fire(kFileStarted, {com::Variant(std::wstring_view(name))});
        const bool exists = GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
        if (exists && !mayReplace(name)) {
            proceed(entry.size);
            continue;
        }
        try {
            fetch(card, entry, folder, path, proceed);
        } catch (const NoAnswer&) {
            throw;
        } catch (const com::Error& error) {
            // A folder that takes no files takes no others either.
            say(error.description());
            return false;
        }
    }
    return isComplete;
}

void RecorderAccess::fetch(CardDialogue& card, const CardEntry& entry, const std::wstring& folder,
                           const std::wstring& path,
                           const std::function<void(std::int64_t)>& proceed) {
    say(L"Reading " + com::widen(entry.name) + L"...");
    const auto status = state_->status();
    const long cardRate = status ? static_cast<long>(status->rate) : 0;
    const long linkRate = linkRate_;
    const long rate = linkRate > 0 ? std::min(linkRate, cardRate) : cardRate;
    PartialFile file(folder);
    for (std::int64_t offset = 0; offset < entry.size;) {
        const auto count = std::min(entry.size - offset, CardDialogue::kLongestBlock);
        file.write(card.read(entry.number, offset, count, rate));
        offset += count;
        proceed(count);
    }
    // The last moment at which an abort leaves nothing behind.
    proceed(0);
    file.keepAs(path);
}

bool RecorderAccess::mayReplace(const std::wstring& name) {
    const com::Variant argument{std::wstring_view(name)};
    VARIANT value = argument.get();
    DISPPARAMS parameters = {&value, nullptr, 1, 0};
    bool may = false;
    for (const com::ComPtr<IDispatch>& sink : events_.sinks<IDispatch>()) {
        com::Variant answer;
        const HRESULT code =
            sink->Invoke(kConfirmReplace, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                         &parameters, answer.put(), nullptr, nullptr);
        may = may ||
              (SUCCEEDED(code) && answer.type() == VT_BOOL && com::isTrue(answer.get().boolVal));
    }
    if (state_->isAborted) throw Aborted();
    return may;
}

}  // namespace kel::bench
