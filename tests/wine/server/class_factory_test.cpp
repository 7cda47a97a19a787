#include <gtest/gtest.h>

#include "com/object.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/null_pointers.h"
#include "tests/wine/server/expected.h"
#include "tests/wine/support/library.h"

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

TEST(ClassFactory, BuiltClassesKeepTheManners) {
    for (const ExpectedClass& row : expectedClasses()) {
        if (!isBuilt(row)) continue;
        SCOPED_TRACE(row.name);
        const auto object = kelUtils().create<IDispatch>(row.identifier);
        expectNullPointersRefused(object.Get());
        ComPtr<IProvideClassInfo> information;
        ComPtr<ITypeInfo> type;
        TYPEATTR* attributes = nullptr;
        ASSERT_EQ(object.As(&information), S_OK);
        ASSERT_EQ(information->GetClassInfo(&type), S_OK);
        ASSERT_EQ(type->GetTypeAttr(&attributes), S_OK);
        EXPECT_EQ(attributes->guid, row.identifier);
        type->ReleaseTypeAttr(attributes);

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
