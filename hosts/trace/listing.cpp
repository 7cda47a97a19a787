#include "hosts/trace/listing.h"

#include <utility>

#include "com/collection.h"
#include "com/object.h"
#include "com/text.h"
#include "hosts/trace/arguments.h"
#include "hosts/trace/mobility.h"

namespace kel::trace {
namespace {

// An object that goes to other threads as another one did.
class MobileShell final : public com::Object<MobileShell> {
public:
    static constexpr com::ClassDescription kClass{};

    template <class Class, class... Arguments>
    static com::ComPtr<IUnknown> around(const Mobility& mobility, Arguments&&... arguments) {
        MobileShell* shell = nullptr;
        com::ComPtr<IUnknown> owner = com::createObject<MobileShell>(nullptr, &shell);
        shell->passage_.open(mobility, shell->controlling());
        shell->object_ = com::createObject<Class>(shell->controlling(), nullptr,
                                                  std::forward<Arguments>(arguments)...);
        return owner;
    }

private:
    void* findInterface(REFIID) override { return nullptr; }
    HRESULT findElsewhere(REFIID iid, void** result) override {
        if (Passage::isAskedFor(iid)) return passage_.give(iid, controlling(), result);
        return object_ ? object_->QueryInterface(iid, result) : E_NOINTERFACE;
    }

    Passage passage_;
    com::ComPtr<IUnknown> object_;
};

// Never changes.
class ListedFile final : public com::Object<ListedFile, com::Dual<IRecorderFile>> {
public:
    static constexpr com::ClassDescription kClass{};

    explicit ListedFile(const Json& json)
        : name_(std::wstring_view(fromText(json.at("name").text()))),
          size_(json.at("size").integer()),
          time_(json.at("time").number()) {}

    STDMETHODIMP get_Name(BSTR* name) override {
        return guarded<IRecorderFile>([&] {
            com::out(name) = nullptr;
            *name = com::Bstr(name_).release();
        });
    }
    STDMETHODIMP get_Size(LONGLONG* size) override {
        return guarded<IRecorderFile>([&] { com::out(size) = size_; });
    }
    STDMETHODIMP get_Time(DATE* time) override {
        return guarded<IRecorderFile>([&] { com::out(time) = time_; });
    }

private:
    const com::Bstr name_;
    const LONGLONG size_;
    const DATE time_;
};

// Null for what is no file.
com::ComPtr<IRecorderFile> fileOf(const com::Variant& item) {
    com::ComPtr<IRecorderFile> file;
    const bool isObject = item.type() == VT_DISPATCH || item.type() == VT_UNKNOWN;
    if (isObject && item.get().punkVal) item.get().punkVal->QueryInterface(IID_PPV_ARGS(&file));
    return file;
}

// Does something with each item of a collection, and the file that it is.
template <class Work>
void forEachFile(ICollection* files, Work&& work) {
    long count = 0;
    com::check(files->get_Count(&count), files);
    for (long index = 0; index < count; ++index) {
        com::Variant item;
        com::check(files->get_Item(com::Variant(index).get(), item.put()), files);
        work(item, fileOf(item));
    }
}

}  // namespace

Json listingToJson(ICollection* files) {
    if (!files) return {};
    Json::Array listed;
    forEachFile(files, [&](const com::Variant& item, const com::ComPtr<IRecorderFile>& file) {
        com::Bstr name;
        LONGLONG size = 0;
        DATE time = 0;
        if (!file) throw com::Error(E_NOINTERFACE, L"An entry of the listing is no file");
        com::check(file->get_Name(name.put()), file);
        com::check(file->get_Size(&size), file);
        com::check(file->get_Time(&time), file);
        listed.push_back(Json::Object{{"name", toText(name.view())},
                                      {"size", size},
                                      {"time", time},
                                      {"mobility", Mobility::of(item.get().punkVal).toJson()}});
    });
    return Json::Object{{"files", listed}, {"mobility", Mobility::of(files).toJson()}};
}

com::ComPtr<ICollection> listingFromJson(const Json& json) {
    com::ComPtr<ICollection> files;
    if (json.isNull()) return files;
    const auto made = MobileShell::around<com::Collection>(Mobility::fromJson(json.at("mobility")));
    com::check(made.As(&files));
    for (const Json& each : json.at("files").array()) {
        const auto file =
            MobileShell::around<ListedFile>(Mobility::fromJson(each.at("mobility")), each);
        com::ComPtr<IDispatch> item;
        com::check(file.As(&item));
        com::check(files->Add(com::Variant(item.Get()).get()), files);
    }
    return files;
}

Json namesIn(ICollection* files) {
    if (!files) return {};
    Json::Array names;
    try {
        forEachFile(files, [&](const com::Variant&, const com::ComPtr<IRecorderFile>& file) {
            com::Bstr name;
            if (file && SUCCEEDED(file->get_Name(name.put()))) names.push_back(toText(name.view()));
        });
    } catch (const com::Error&) {
        // What cannot be read is for the recorder to judge.
    }
    return names;
}

}  // namespace kel::trace
