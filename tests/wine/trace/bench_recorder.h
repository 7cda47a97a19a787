#pragma once
// Access to the recorder of a virtual instrument, with a folder to download to.

#include <atomic>
#include <thread>

#include "com/message_loop.h"
#include "tests/wine/link/access_test.h"
#include "tests/wine/support/event_sink.h"
#include "tests/wine/support/temporary_folder.h"

namespace kel::bench::test {

class RecorderTest : public AccessTest {
protected:
    // What a member without arguments gives, which must not fail.
    template <class Interface, class Value>
    static Value get(const ComPtr<Interface>& object,
                     HRESULT (STDMETHODCALLTYPE Interface::*member)(Value*)) {
        Value value{};
        EXPECT_EQ((object.Get()->*member)(&value), S_OK);
        return value;
    }

    void TearDown() override {
        access.Reset();
        owner.Reset();
        AccessTest::TearDown();
    }

    void attach() {
        access.Reset();
        ASSERT_EQ(link.As(&access), S_OK);
        owner = com::createObject<kel::test::EventSink>(nullptr, &sink);
        DWORD cookie = 0;
        ASSERT_EQ(kel::test::eventsOf(access.Get(), DIID__IRecorderAccessEvents)
                      ->Advise(owner.Get(), &cookie),
                  S_OK);
    }

    void connectTo(CardKind card, double instrumentScale = 1000,
                   const wchar_t* linkScale = nullptr) {
        InstrumentOptions options;
        options.card = card;
        connect(options, instrumentScale, linkScale);
        attach();
    }

    // Null when it fails.
    ComPtr<ICollection> listing() {
        ComPtr<ICollection> files;
        access->ReadListing(&files);
        return files;
    }

    static long countOf(const ComPtr<ICollection>& files) {
        return get(files, &ICollection::get_Count);
    }

    static ComPtr<IRecorderFile> fileAt(const ComPtr<ICollection>& files, long index) {
        com::Variant item;
        ComPtr<IRecorderFile> file;
        EXPECT_EQ(files->get_Item(com::Variant(index).get(), item.put()), S_OK);
        item.get().pdispVal->QueryInterface(IID_PPV_ARGS(&file));
        return file;
    }

    static std::wstring nameOf(const ComPtr<IRecorderFile>& file) {
        Bstr name;
        EXPECT_EQ(file->get_Name(name.put()), S_OK);
        return std::wstring(name.view());
    }

    // Does something on another thread, which gets the access object as any thread would, while
    // this one runs its message loop.
    template <class Work>
    void onWorker(Work&& work) {
        IStream* passed = nullptr;
        ASSERT_EQ(
            CoMarshalInterThreadInterfaceInStream(__uuidof(IRecorderAccess), access.Get(), &passed),
            S_OK);
        std::atomic<bool> isDone = false;
        std::thread worker([&] {
            CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            {
                ComPtr<IRecorderAccess> there;
                CoGetInterfaceAndReleaseStream(passed, IID_PPV_ARGS(&there));
                work(there);
            }
            CoUninitialize();
            isDone = true;
        });
        while (!isDone) {
            com::sleepUntilMessage(std::chrono::milliseconds(2));
            com::runWaitingMessages();
            if (meanwhile) meanwhile();
        }
        worker.join();
    }

    bool download(const ComPtr<ICollection>& files) {
        VARIANT_BOOL result = VARIANT_FALSE;
        IStream* passed = nullptr;
        EXPECT_EQ(
            CoMarshalInterThreadInterfaceInStream(__uuidof(ICollection), files.Get(), &passed),
            S_OK);
        onWorker([&](const ComPtr<IRecorderAccess>& there) {
            ComPtr<ICollection> filesThere;
            EXPECT_EQ(CoGetInterfaceAndReleaseStream(passed, IID_PPV_ARGS(&filesThere)), S_OK);
            EXPECT_EQ(filesThere.Get(), files.Get());
            EXPECT_EQ(there.Get(), access.Get()) << "called there directly";
            EXPECT_EQ(there->Download(files.Get(), Bstr(folder.path()).get(), &result), S_OK);
        });
        return result == VARIANT_TRUE;
    }

    bool format() {
        VARIANT_BOOL result = VARIANT_FALSE;
        onWorker(
            [&](const ComPtr<IRecorderAccess>& there) { EXPECT_EQ(there->Format(&result), S_OK); });
        return result == VARIANT_TRUE;
    }

    bool isRunning() { return get(access, &IRecorderAccess::get_Running) == VARIANT_TRUE; }

    kel::test::TemporaryFolder folder;
    ComPtr<IRecorderAccess> access;
    ComPtr<IUnknown> owner;
    kel::test::EventSink* sink = nullptr;
    // Done now and then on this thread while the other one works.
    std::function<void()> meanwhile;
};

}  // namespace kel::bench::test
