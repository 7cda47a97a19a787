#include "tests/wine/service/fake_recorder.h"

#include <algorithm>

#include "com/collection.h"
#include "com/message_loop.h"
#include "com/text.h"
#include "com/variant.h"

namespace kel::test {
namespace {

class FakeFile final : public com::Object<FakeFile, com::Dual<IRecorderFile>> {
public:
    static constexpr com::ClassDescription kClass{};
    explicit FakeFile(RecorderFile file) : file_(std::move(file)) {}
    STDMETHODIMP get_Name(BSTR* name) override {
        *name = com::Bstr(std::wstring_view(file_.name)).release();
        return S_OK;
    }
    STDMETHODIMP get_Size(LONGLONG* size) override {
        *size = file_.size;
        return S_OK;
    }
    STDMETHODIMP get_Time(DATE* time) override {
        *time = file_.time;
        return S_OK;
    }

private:
    RecorderFile file_;
};

class AgileCollection final : public com::Object<AgileCollection> {
public:
    static constexpr com::ClassDescription kClass{};
    void finalConstruct() {
        com::check(CoCreateFreeThreadedMarshaler(controlling(), &marshaler_));
        collection_ = com::createObject<com::Collection>(controlling(), nullptr);
    }

private:
    void* findInterface(REFIID iid) override {
        return iid == IID_IAgileObject ? inner() : Object::findInterface(iid);
    }
    HRESULT findElsewhere(REFIID iid, void** result) override {
        return (iid == IID_IMarshal ? marshaler_ : collection_)->QueryInterface(iid, result);
    }

    com::ComPtr<IUnknown> marshaler_;
    com::ComPtr<IUnknown> collection_;
};

std::string namesOf(ICollection* selection) {
    std::string names;
    long count = 0;
    com::check(selection->get_Count(&count), selection);
    for (long i = 0; i < count; ++i) {
        com::Variant item;
        com::Bstr name;
        com::ComPtr<IRecorderFile> file;
        com::check(selection->get_Item(com::Variant(i).get(), item.put()), selection);
        com::check(item.get().pdispVal->QueryInterface(IID_PPV_ARGS(&file)));
        com::check(file->get_Name(name.put()), file);
        names += " " + com::narrow(name.view());
    }
    return names;
}

}  // namespace

com::ComPtr<IUnknown> makeCollection(bool isAgile) {
    return isAgile ? com::createObject<AgileCollection>(nullptr, nullptr)
                   : com::createObject<com::Collection>(nullptr, nullptr);
}

void FakeRecorder::finalConstruct() {
    if (isAgile_) com::check(CoCreateFreeThreadedMarshaler(controlling(), &marshaler_));
}

void* FakeRecorder::findInterface(REFIID iid) {
    if (iid == IID_IAgileObject && isAgile_) return static_cast<IDispatch*>(this);
    return Object::findInterface(iid);
}

HRESULT FakeRecorder::findElsewhere(REFIID iid, void** result) {
    return iid == IID_IMarshal && isAgile_ ? marshaler_->QueryInterface(iid, result)
                                           : E_NOINTERFACE;
}

com::Variant FakeRecorder::fire(DISPID event, std::vector<com::Variant> arguments) {
    std::ranges::reverse(arguments);
    DISPPARAMS given{reinterpret_cast<VARIANT*>(arguments.data()), nullptr,
                     static_cast<UINT>(arguments.size()), 0};
    com::Variant answer;
    for (const auto& sink : events_.sinks<IDispatch>())
        com::check(sink->Invoke(event, IID_NULL, 0, DISPATCH_METHOD, &given, answer.put(), nullptr,
                                nullptr));
    return answer;
}

bool FakeRecorder::work() const {
    if (!isAgile_) com::runWaitingMessages();
    Sleep(1);
    return !isAborted;
}

HRESULT FakeRecorder::ReadListing(ICollection** listing) {
    return call("ReadListing", [&] {
        const auto made = com::makeObject<com::Collection>();
        for (const RecorderFile& file : files)
            made->Add(com::Variant(com::makeObject<FakeFile>(file).Get()).get());
        *listing = made.Get();
        made->AddRef();
    });
}

HRESULT FakeRecorder::SelectFile(BSTR name) {
    return call("SelectFile " + com::narrow(name), [] {});
}

HRESULT FakeRecorder::Download(ICollection* selection, BSTR folder, VARIANT_BOOL* result) {
    return call("Download to " + com::narrow(folder) + namesOf(selection), [&] {
        isAborted = false;
        *result = operation() ? 1 : 0;
    });
}

HRESULT FakeRecorder::CardSpace(LONGLONG* usedBytes, LONGLONG* allBytes) {
    return call("CardSpace", [&] {
        *usedBytes = used;
        *allBytes = capacity;
    });
}

HRESULT FakeRecorder::Format(VARIANT_BOOL* result) {
    return call("Format", [&] {
        isAborted = false;
        *result = operation() ? 1 : 0;
    });
}

HRESULT FakeRecorder::SetRate(long rate) {
    return call("SetRate " + std::to_string(rate), [] {});
}

HRESULT FakeRecorder::Abort() {
    return call("Abort", [&] { isAborted = true; });
}

HRESULT FakeRecorder::SetLinkRate(long rate) {
    return call("SetLinkRate " + std::to_string(rate), [] {});
}

}  // namespace kel::test
