#include <gtest/gtest.h>
#include <objsafe.h>

#include <cstdlib>

#include "com/object.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/server/library_classes.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/refusals.h"
#include "tests/wine/support/resource_counts.h"

namespace kel::test {
namespace {

using com::ComPtr;

ComPtr<IClassFactory> factoryOf(REFCLSID identifier) {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(kelUtils().classObject(identifier, IID_PPV_ARGS(&factory)), S_OK);
    return factory;
}

// An object that is a component and nothing else.
class Outer final : public com::Object<Outer> {
public:
    static constexpr com::ClassDescription kClass{};
    ComPtr<IUnknown> part;

private:
    HRESULT findElsewhere(REFIID iid, void** result) override {
        return part ? part->QueryInterface(iid, result) : E_NOINTERFACE;
    }
};

ComPtr<Outer> makeOuter(REFCLSID identifier) {
    const auto outer = com::makeObject<Outer>();
    outer->part = kelUtils().create<IUnknown>(identifier, outer->controlling());
    return outer;
}

TEST(ClassFactory, IsMadeOnceAndLocksTheLibraryOnDemand) {
    const ComPtr<IClassFactory> factory = factoryOf(CLSID_Preprocessor);
    EXPECT_EQ(factory.Get(), factoryOf(CLSID_Preprocessor).Get());
    const auto unloadsAfter = [&](BOOL lock) {
        EXPECT_EQ(factory->LockServer(lock), S_OK);
        return kelUtils().canUnloadNow();
    };
    EXPECT_EQ(kelUtils().canUnloadNow(), S_OK);
    auto object = kelUtils().create<IUnknown>(CLSID_Preprocessor);
    EXPECT_EQ(kelUtils().canUnloadNow(), S_FALSE);
    EXPECT_EQ(unloadsAfter(TRUE), S_FALSE);
    object.Reset();
    EXPECT_EQ(unloadsAfter(TRUE), S_FALSE);
    EXPECT_EQ(unloadsAfter(FALSE), S_FALSE);
    EXPECT_EQ(unloadsAfter(FALSE), S_OK);
}

TEST(ClassFactory, RefusesWhatItCannotGive) {
    const ComPtr<IClassFactory> factory = factoryOf(CLSID_Preprocessor);
    const auto ask = [](REFCLSID identifier, REFIID iid, void** result) {
        return kelUtils().classObject(identifier, iid, result);
    };
    const auto make = [&](IUnknown* outer, REFIID iid, void** result) {
        return factory->CreateInstance(outer, iid, result);
    };
    EXPECT_EQ(ask(CLSID_Preprocessor, IID_IClassFactory, nullptr), E_POINTER);
    EXPECT_EQ(make(nullptr, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(make(factory.Get(), IID_IDispatch, nullptr), E_POINTER);
    void* results[] = {&results, &results, &results, &results};
    EXPECT_EQ(ask(IID_IUnknown, IID_IClassFactory, &results[0]), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(ask(CLSID_Preprocessor, IID_IDispatch, &results[1]), E_NOINTERFACE);
    EXPECT_EQ(make(factory.Get(), IID_IOleObject, &results[2]), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(make(nullptr, IID_IOleObject, &results[3]), E_NOINTERFACE);
    for (void* const result : results)
        EXPECT_EQ(result, nullptr);
}

ComPtr<IUnknown> ask(IUnknown* object, REFIID iid) {
    ComPtr<IUnknown> result;
    EXPECT_EQ(object->QueryInterface(iid, reinterpret_cast<void**>(result.GetAddressOf())), S_OK);
    return result;
}

// Every interface leads to every other, and to the one identity.
void expectOneIdentity(IUnknown* object, const std::vector<IID>& interfaces) {
    for (const IID& from : interfaces) {
        const ComPtr<IUnknown> first = ask(object, from);
        for (const IID& to : interfaces)
            EXPECT_EQ(ask(first.Get(), to).Get(), ask(object, to).Get());
        EXPECT_EQ(ask(first.Get(), IID_IUnknown).Get(), object);
        void* none = &none;
        EXPECT_EQ(first->QueryInterface(IID_IStream, &none), E_NOINTERFACE);
        EXPECT_EQ(none, nullptr);
        EXPECT_EQ(first->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    }
}

void expectClassInformation(const LibraryClass& expected, IDispatch* object) {
    ComPtr<IProvideClassInfo2> information;
    ComPtr<ISupportErrorInfo> support;
    ComPtr<ITypeInfo> type;
    com::check(object->QueryInterface(IID_PPV_ARGS(&information)));
    com::check(object->QueryInterface(IID_PPV_ARGS(&support)));
    com::check(information->GetClassInfo(&type));
    EXPECT_EQ(attributesOf(type.Get()).guid, expected.identifier);
    EXPECT_EQ(information->GetClassInfo(nullptr), E_POINTER);
    GUID source{};
    constexpr DWORD kDefault = GUIDKIND_DEFAULT_SOURCE_DISP_IID;
    EXPECT_EQ(information->GetGUID(kDefault, nullptr), E_POINTER);
    EXPECT_EQ(information->GetGUID(kDefault + 1, &source), E_INVALIDARG);
    EXPECT_EQ(information->GetGUID(kDefault, &source),
              expected.events == GUID_NULL ? E_UNEXPECTED : S_OK);
    EXPECT_EQ(source, expected.events);
    for (const IID& each : expected.answered)
        EXPECT_EQ(support->InterfaceSupportsErrorInfo(each), S_OK);
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IDispatch), S_FALSE);
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IStream), S_FALSE);
}

void expectUnsafe(IDispatch* object, const std::wstring& source) {
    ComPtr<IObjectSafety> safety;
    com::check(
        object->QueryInterface(IID_IObjectSafety, reinterpret_cast<void**>(safety.GetAddressOf())));
    DWORD supported = 7, enabled = 7;
    EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IDispatch, &supported, &enabled), S_OK);
    EXPECT_EQ(supported + enabled, 0u);
    EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IStream, &supported, &enabled), E_NOINTERFACE);
    EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IDispatch, 0, 0), S_OK);
    for (const DWORD option :
         {INTERFACESAFE_FOR_UNTRUSTED_CALLER, INTERFACESAFE_FOR_UNTRUSTED_DATA}) {
        EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IDispatch, option, option), E_FAIL);
        expectTold(source, IID_IObjectSafety);
    }
}

TEST(ClassFactory, BuiltClassesKeepTheManners) {
    for (const LibraryClass& each : builtClasses()) {
        SCOPED_TRACE(each.name);
        const auto object = kelUtils().create<IDispatch>(each.identifier);
        expectNullPointersRefused(object.Get(), each.program());
        // Its window opens without a communicator.
        const bool opens = each.name == "MultiSelectDialog";
        expectFailuresExplained(object.Get(), each.program(), opens ? "ShowModal" : "");
        expectClassInformation(each, object.Get());
        expectUnsafe(object.Get(), each.program());
        std::vector<IID> interfaces{IID_IUnknown, IID_IDispatch, IID_ISupportErrorInfo,
                                    IID_IProvideClassInfo, IID_IProvideClassInfo2};
        interfaces.insert(interfaces.end(), each.answered.begin(), each.answered.end());
        expectOneIdentity(ask(object.Get(), IID_IUnknown).Get(), interfaces);

        ComPtr<Outer> outer = makeOuter(each.identifier);
        EXPECT_NE(outer->part.Get(), outer->controlling());
        EXPECT_EQ(ask(outer->part.Get(), IID_IUnknown).Get(), outer->part.Get());
        expectOneIdentity(outer->controlling(), interfaces);
        const ComPtr<IUnknown> part = ask(outer->controlling(), interfaces.back());
        outer.Reset();
        EXPECT_NE(ask(part.Get(), IID_IDispatch).Get(), nullptr);
    }
}

// The last reference from outside goes while a script runs.
TEST(ClassFactory, AComponentKeepsWhatItIsPartOfAliveWhileItRuns) {
    FakeLink link;
    ComPtr<Outer> outer = makeOuter(CLSID_Preprocessor);
    ComPtr<IPreprocessorImpl> preprocessor;
    com::check(outer.As(&preprocessor));
    com::check(preprocessor->put_Communicator(link.communicator()));
    outer.Reset();
    link.onCall = [&](const std::string&) { preprocessor.Reset(); };
    VARIANT_BOOL result = VARIANT_FALSE;
    IPreprocessorImpl* running = preprocessor.Get();
    EXPECT_EQ(running->PreprocessAndRun(com::Bstr(L"one\n#WAIT\n##DATE()").get(), &result), S_OK);
    EXPECT_EQ(result, VARIANT_TRUE);
}

TEST(ClassFactory, ComponentsMadeAgainAndAgainLeaveNothing) {
    for (const LibraryClass& each : builtClasses()) {
        SCOPED_TRACE(each.name);
        expectNothingLeft([&] { kelUtils().create<IDispatch>(each.identifier); });
    }
}

int allocationsThatGoWell = 0;

void* allocateFew(std::size_t size) {
    return allocationsThatGoWell-- == 0 ? nullptr : std::malloc(size);
}

// Makes an object with that allocation failing. Tells whether there were so many.
bool fails(const LibraryClass& each, int allocation) {
    SCOPED_TRACE(allocation);
    allocationsThatGoWell = allocation;
    ComPtr<IDispatch> object;
    const HRESULT code = factoryOf(each.identifier)->CreateInstance(nullptr, IID_PPV_ARGS(&object));
    // What is not needed at once may be made later.
    EXPECT_TRUE(code == E_OUTOFMEMORY || (code == S_OK && allocation > 0)) << code;
    EXPECT_EQ(FAILED(code), !object);
    return allocationsThatGoWell < 0;
}

TEST(ClassFactory, AnyFailingAllocationIsTold) {
    const std::vector<LibraryClass> classes = builtClasses();
    const ImportPatch patch(kelUtils().module(), "malloc", reinterpret_cast<void*>(allocateFew));
    for (const LibraryClass& each : classes) {
        SCOPED_TRACE(each.name);
        for (int allocation = 0; fails(each, allocation); ++allocation)
            EXPECT_EQ(kelUtils().canUnloadNow(), S_OK);
    }
}

}  // namespace
}  // namespace kel::test
