#include <gtest/gtest.h>
#include <objsafe.h>

#include <cstdlib>

#include "com/object.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/server/expected.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/refusals.h"
#include "tests/wine/support/resource_counts.h"
#include "tests/wine/support/type_library.h"

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

TEST(ClassObject, OnlyTheClassesOfTheTableHaveAFactory) {
    for (const ExpectedClass& row : expectedClasses()) {
        SCOPED_TRACE(row.name);
        const bool isCreatable = row.registryScript != 0;
        ComPtr<IClassFactory> factory;
        EXPECT_EQ(kelUtils().classObject(row.identifier, IID_PPV_ARGS(&factory)),
                  isCreatable ? S_OK : CLASS_E_CLASSNOTAVAILABLE);
        EXPECT_EQ(factory != nullptr, isCreatable);
    }
    void* result = &result;
    EXPECT_EQ(kelUtils().classObject(IID_IUnknown, IID_IClassFactory, &result),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(kelUtils().classObject(CLSID_Preprocessor, IID_IDispatch, &result), E_NOINTERFACE);
    EXPECT_EQ(kelUtils().classObject(CLSID_Preprocessor, IID_IClassFactory, nullptr), E_POINTER);
}

TEST(ClassObject, IsMadeOnceAndDoesNotLockTheLibrary) {
    const ComPtr<IClassFactory> first = factoryOf(CLSID_Preprocessor);
    EXPECT_EQ(first.Get(), factoryOf(CLSID_Preprocessor).Get());
    EXPECT_NE(first.Get(), factoryOf(CLSID_KelTerminal).Get());
    EXPECT_EQ(kelUtils().canUnloadNow(), S_OK);
}

TEST(ClassFactory, RefusesWhatItCannotGive) {
    const ComPtr<IClassFactory> factory = factoryOf(CLSID_Preprocessor);
    IUnknown* const outer = factory.Get();
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(factory->CreateInstance(outer, IID_IDispatch, nullptr), E_POINTER);
    for (IUnknown* const each : {outer, static_cast<IUnknown*>(nullptr)}) {
        void* result = &result;
        EXPECT_EQ(factory->CreateInstance(each, IID_IOleObject, &result),
                  each ? CLASS_E_NOAGGREGATION : E_NOINTERFACE);
        EXPECT_EQ(result, nullptr);
    }
    EXPECT_EQ(kelUtils().canUnloadNow(), S_OK);
}

TEST(ClassFactory, UnbuiltClassesSayWhichTheyAre) {
    for (const ExpectedClass& row : expectedClasses()) {
        if (row.registryScript == 0 || row.isBuilt()) continue;
        SCOPED_TRACE(row.name);
        void* result = &result;
        EXPECT_EQ(factoryOf(row.identifier)->CreateInstance(nullptr, IID_IDispatch, &result),
                  E_NOTIMPL);
        EXPECT_EQ(result, nullptr);
        const auto error = takeError();
        ASSERT_TRUE(error);
        EXPECT_NE(error->description.find(com::widen(row.name)), std::wstring::npos);
        EXPECT_EQ(error->source, row.program());
        EXPECT_EQ(error->interfaceId, IID_IDispatch);
    }
}

ComPtr<IUnknown> ask(IUnknown* object, REFIID iid) {
    ComPtr<IUnknown> result;
    EXPECT_EQ(object->QueryInterface(iid, reinterpret_cast<void**>(result.GetAddressOf())), S_OK);
    return result;
}

// Every interface leads to every other, and all of them to the one identity.
void expectOneIdentity(IUnknown* object, const std::vector<IID>& interfaces) {
    for (const IID& from : interfaces) {
        const ComPtr<IUnknown> first = ask(object, from);
        for (const IID& to : interfaces) {
            const ComPtr<IUnknown> second = ask(first.Get(), to);
            EXPECT_EQ(second.Get(), ask(object, to).Get());
            EXPECT_EQ(ask(second.Get(), IID_IUnknown).Get(), object);
        }
        void* none = &none;
        EXPECT_EQ(first->QueryInterface(IID_IStream, &none), E_NOINTERFACE);
        EXPECT_EQ(none, nullptr);
        EXPECT_EQ(first->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    }
}

// Its class and its default events. Gives the interfaces that it answers with.
std::vector<IID> expectClassInformation(const ExpectedClass& row, IDispatch* object) {
    ComPtr<IProvideClassInfo2> information;
    ComPtr<ISupportErrorInfo> support;
    ComPtr<ITypeInfo> coclass;
    com::check(object->QueryInterface(IID_PPV_ARGS(&information)));
    com::check(object->QueryInterface(IID_PPV_ARGS(&support)));
    com::check(information->GetClassInfo(&coclass));
    EXPECT_EQ(attributesOf(coclass.Get()).guid, row.identifier);
    EXPECT_EQ(information->GetClassInfo(nullptr), E_POINTER);
    GUID source{};
    constexpr DWORD kDefault = GUIDKIND_DEFAULT_SOURCE_DISP_IID;
    EXPECT_EQ(information->GetGUID(kDefault, nullptr), E_POINTER);
    EXPECT_EQ(information->GetGUID(kDefault + 1, &source), E_INVALIDARG);
    const bool hasEvents = row.interfaces.find("default source") != std::string::npos;
    EXPECT_EQ(information->GetGUID(kDefault, &source), hasEvents ? S_OK : E_UNEXPECTED);
    EXPECT_EQ(source != GUID_NULL, hasEvents);

    std::vector<IID> interfaces{IID_IUnknown, IID_IDispatch, IID_ISupportErrorInfo,
                                IID_IProvideClassInfo, IID_IProvideClassInfo2};
    for (UINT i = 0; i < attributesOf(coclass.Get()).cImplTypes; ++i) {
        INT flags = 0;
        com::check(coclass->GetImplTypeFlags(i, &flags));
        if (flags & IMPLTYPEFLAG_FSOURCE) continue;
        interfaces.push_back(attributesOf(implemented(coclass.Get(), i).Get()).guid);
        EXPECT_EQ(support->InterfaceSupportsErrorInfo(interfaces.back()), S_OK);
    }
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IDispatch), S_FALSE);
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IStream), S_FALSE);
    return interfaces;
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
    for (const ExpectedClass& row : expectedClasses()) {
        if (!row.isBuilt()) continue;
        SCOPED_TRACE(row.name);
        const auto object = kelUtils().create<IDispatch>(row.identifier);
        expectNullPointersRefused(object.Get(), row.program());
        // Its window opens without a communicator.
        const bool opens = row.name == "MultiSelectDialog";
        expectFailuresExplained(object.Get(), row.program(), opens ? "ShowModal" : "");
        const std::vector<IID> interfaces = expectClassInformation(row, object.Get());
        expectUnsafe(object.Get(), row.program());
        expectOneIdentity(ask(object.Get(), IID_IUnknown).Get(), interfaces);

        ComPtr<Outer> outer = makeOuter(row.identifier);
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
    for (const ExpectedClass& row : expectedClasses()) {
        if (!row.isBuilt()) continue;
        SCOPED_TRACE(row.name);
        expectNothingLeft([&] { kelUtils().create<IDispatch>(row.identifier); });
    }
}

int allocationsThatGoWell = 0;

void* allocateFew(std::size_t size) {
    return allocationsThatGoWell-- == 0 ? nullptr : std::malloc(size);
}

TEST(ClassFactory, AnyFailingAllocationIsTold) {
    const ImportPatch patch(kelUtils().module(), "malloc", reinterpret_cast<void*>(allocateFew));
    for (const ExpectedClass& row : expectedClasses()) {
        if (!row.isBuilt()) continue;
        bool hasFailed = true;
        for (int allocation = 0; hasFailed; ++allocation) {
            SCOPED_TRACE(row.name + (" " + std::to_string(allocation)));
            allocationsThatGoWell = allocation;
            ComPtr<IDispatch> object;
            const HRESULT code =
                factoryOf(row.identifier)->CreateInstance(nullptr, IID_PPV_ARGS(&object));
            hasFailed = allocationsThatGoWell < 0;
            // What is not needed at once may be made later.
            EXPECT_TRUE(code == E_OUTOFMEMORY || (code == S_OK && allocation > 0)) << code;
            EXPECT_EQ(FAILED(code), !object);
            object.Reset();
            EXPECT_EQ(kelUtils().canUnloadNow(), S_OK);
        }
    }
}

TEST(CanUnload, CountsObjectsAndLocks) {
    const ComPtr<IClassFactory> factory = factoryOf(CLSID_Preprocessor);
    auto object = kelUtils().create<IUnknown>(CLSID_Preprocessor);
    EXPECT_EQ(kelUtils().canUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    object.Reset();
    EXPECT_EQ(kelUtils().canUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(kelUtils().canUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(kelUtils().canUnloadNow(), S_OK);
}

}  // namespace
}  // namespace kel::test
