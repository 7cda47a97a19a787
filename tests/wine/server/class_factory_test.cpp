#include <gtest/gtest.h>
#include <objsafe.h>

#include <set>

#include "com/object.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/server/expected.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/refusals.h"
#include "tests/wine/support/type_library.h"

namespace kel::test {
namespace {

using com::ComPtr;

ComPtr<IClassFactory> factoryOf(REFCLSID identifier) {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(kelUtils().classObject(identifier, IID_PPV_ARGS(&factory)), S_OK);
    return factory;
}

class Outer final : public com::Object<Outer> {
public:
    static constexpr com::ClassDescription kClass{};
    com::ComPtr<IUnknown> part;

private:
    HRESULT findElsewhere(REFIID iid, void** result) override {
        return part ? part->QueryInterface(iid, result) : E_NOINTERFACE;
    }
};

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
    const ComPtr<IUnknown> outer = factory;
    void* result = &result;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(factory->CreateInstance(outer.Get(), IID_IDispatch, nullptr), E_POINTER);
    EXPECT_EQ(factory->CreateInstance(outer.Get(), IID_IDispatch, &result), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(result, nullptr);
    result = &result;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IOleObject, &result), E_NOINTERFACE);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(kelUtils().canUnloadNow(), S_OK);
}

TEST(ClassFactory, UnbuiltClassesSayWhichTheyAre) {
    for (const ExpectedClass& row : expectedClasses()) {
        if (row.registryScript == 0 || isBuilt(row)) continue;
        SCOPED_TRACE(row.name);
        const std::wstring name(row.name.begin(), row.name.end());
        void* result = &result;
        EXPECT_EQ(factoryOf(row.identifier)->CreateInstance(nullptr, IID_IDispatch, &result),
                  E_NOTIMPL);
        EXPECT_EQ(result, nullptr);
        const auto error = takeError();
        ASSERT_TRUE(error);
        EXPECT_NE(error->description.find(name), std::wstring::npos);
        EXPECT_EQ(error->source, L"KelUtils." + name + L".1");
        EXPECT_EQ(error->interfaceId, IID_IDispatch);
    }
}

// Its class, its default events, and that its dual interfaces are all reached late-bound.
void expectClassInformation(const ExpectedClass& row, IDispatch* object) {
    ComPtr<IProvideClassInfo2> information;
    ComPtr<ISupportErrorInfo> support;
    ComPtr<ITypeInfo> coclass, type;
    ASSERT_EQ(object->QueryInterface(IID_PPV_ARGS(&information)), S_OK);
    ASSERT_EQ(object->QueryInterface(IID_PPV_ARGS(&support)), S_OK);
    ASSERT_EQ(information->GetClassInfo(&coclass), S_OK);
    ASSERT_EQ(object->GetTypeInfo(0, 0, &type), S_OK);
    EXPECT_EQ(attributesOf(coclass.Get()).guid, row.identifier);
    GUID source{};
    const bool hasEvents = row.interfaces.find("default source") != std::string::npos;
    EXPECT_EQ(information->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &source),
              hasEvents ? S_OK : E_UNEXPECTED);
    EXPECT_EQ(source != GUID_NULL, hasEvents);

    std::set<std::string> reached;
    for (const auto& level : levelsOf(type))
        reached.insert(nameOf(level.Get()));
    for (UINT i = 0; i < attributesOf(coclass.Get()).cImplTypes; ++i) {
        const ComPtr<ITypeInfo> each = implemented(coclass.Get(), i);
        INT flags = 0;
        com::check(coclass->GetImplTypeFlags(i, &flags));
        if (flags & IMPLTYPEFLAG_FSOURCE) continue;
        const TYPEATTR attributes = attributesOf(each.Get());
        EXPECT_EQ(support->InterfaceSupportsErrorInfo(attributes.guid), S_OK);
        const bool isDual = attributes.wTypeFlags & TYPEFLAG_FDUAL;
        EXPECT_EQ(reached.contains(nameOf(each.Get())), isDual) << nameOf(each.Get());
    }
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IDispatch), S_FALSE);
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IStream), S_FALSE);
}

void expectUnsafe(IDispatch* object, const std::wstring& source) {
    ComPtr<IObjectSafety> safety;
    ASSERT_EQ(
        object->QueryInterface(IID_IObjectSafety, reinterpret_cast<void**>(safety.GetAddressOf())),
        S_OK);
    DWORD supported = 7, enabled = 7;
    EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IDispatch, &supported, &enabled), S_OK);
    EXPECT_EQ(supported + enabled, 0u);
    EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IStream, &supported, &enabled), E_NOINTERFACE);
    EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IDispatch, 0, 0), S_OK);
    for (const DWORD option :
         {INTERFACESAFE_FOR_UNTRUSTED_CALLER, INTERFACESAFE_FOR_UNTRUSTED_DATA}) {
        EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IDispatch, option, option), E_FAIL);
        const auto told = takeError();
        ASSERT_TRUE(told);
        EXPECT_EQ(told->source, source);
        EXPECT_EQ(told->interfaceId, IID_IObjectSafety);
        EXPECT_NE(told->description, L"");
    }
}

TEST(ClassFactory, BuiltClassesKeepTheManners) {
    for (const ExpectedClass& row : expectedClasses()) {
        if (!isBuilt(row)) continue;
        SCOPED_TRACE(row.name);
        const std::wstring source = L"KelUtils." + com::widen(row.name) + L".1";
        const auto object = kelUtils().create<IDispatch>(row.identifier);
        expectNullPointersRefused(object.Get(), source);
        // Its window opens without a communicator.
        const bool opens = row.name == "MultiSelectDialog";
        expectFailuresExplained(object.Get(), source, opens ? "ShowModal" : "");
        expectClassInformation(row, object.Get());
        expectUnsafe(object.Get(), source);

        const auto outer = com::makeObject<Outer>();
        ASSERT_EQ(factoryOf(row.identifier)
                      ->CreateInstance(outer->controlling(), IID_PPV_ARGS(&outer->part)),
                  S_OK);
        ComPtr<IDispatch> part;
        ComPtr<IUnknown> identity;
        ASSERT_EQ(outer->QueryInterface(IID_PPV_ARGS(&part)), S_OK);
        ASSERT_EQ(part.As(&identity), S_OK);
        EXPECT_EQ(identity.Get(), outer->controlling());
    }
}

TEST(CanUnload, CountsObjectsAndLocks) {
    const ComPtr<IClassFactory> factory = factoryOf(CLSID_Preprocessor);
    ComPtr<IUnknown> object;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&object)), S_OK);
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
