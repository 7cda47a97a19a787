// The base of every object, seen on the Preprocessor: identity, aggregation, class information.
#include "com/object.h"

#include <gtest/gtest.h>

#include "interfaces/KelUtils.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

using com::ComPtr;

const IID* const kInterfaces[] = {&IID_IUnknown,
                                  &IID_IDispatch,
                                  &IID_IPreprocessor,
                                  &IID_IPreprocessorImpl,
                                  &IID_IPreprocessorControl,
                                  &IID_IPreprocessor2,
                                  &IID_IPreprocessorExtension,
                                  &IID_ISupportErrorInfo,
                                  &IID_IProvideClassInfo,
                                  &IID_IProvideClassInfo2};

ComPtr<IUnknown> ask(IUnknown* object, REFIID iid) {
    ComPtr<IUnknown> result;
    EXPECT_EQ(object->QueryInterface(iid, reinterpret_cast<void**>(result.GetAddressOf())), S_OK);
    return result;
}

// Every interface leads to every other, and all of them to the one identity.
void expectOneIdentity(IUnknown* object, IUnknown* identity) {
    for (const IID* from : kInterfaces) {
        const ComPtr<IUnknown> first = ask(object, *from);
        for (const IID* to : kInterfaces) {
            const ComPtr<IUnknown> second = ask(first.Get(), *to);
            EXPECT_EQ(second.Get(), ask(object, *to).Get());
            EXPECT_EQ(ask(second.Get(), IID_IUnknown).Get(), identity);
        }
        void* none = &none;
        EXPECT_EQ(first->QueryInterface(IID_IOleObject, &none), E_NOINTERFACE);
        EXPECT_EQ(none, nullptr);
        EXPECT_EQ(first->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    }
}

// An object that is a Preprocessor and nothing else.
class Outer final : public IUnknown {
public:
    Outer() {
        ComPtr<IClassFactory> factory;
        com::check(kelUtils().classObject(CLSID_Preprocessor, IID_PPV_ARGS(&factory)));
        com::check(factory->CreateInstance(this, IID_PPV_ARGS(&inner)));
        references = 0;
    }

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        if (iid != IID_IUnknown || !result) return inner->QueryInterface(iid, result);
        *result = this;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --references;
        if (left == 0) delete this;
        return left;
    }

    ComPtr<IUnknown> inner;

    // Held by its maker until it has its inner object.
    ULONG references = 1;

private:
    ~Outer() = default;
};

TEST(Object, InterfacesLeadToEachOther) {
    const auto object = kelUtils().create<IUnknown>(CLSID_Preprocessor);
    expectOneIdentity(object.Get(), object.Get());
}

TEST(Object, InsideAnotherItHasTheOthersIdentity) {
    ComPtr<Outer> outer(new Outer);
    EXPECT_NE(outer->inner.Get(), static_cast<IUnknown*>(outer.Get()));
    EXPECT_EQ(ask(outer->inner.Get(), IID_IUnknown).Get(), outer->inner.Get());
    expectOneIdentity(outer.Get(), outer.Get());

    const ULONG before = outer->references;
    const ComPtr<IUnknown> part = ask(outer.Get(), IID_IPreprocessor2);
    EXPECT_EQ(outer->references, before + 1);
    outer.Reset();
    EXPECT_NE(ask(part.Get(), IID_IPreprocessor).Get(), nullptr);
}

// The last reference from outside goes while a script runs.
TEST(Object, InsideAnotherItKeepsTheOtherAliveWhileItRuns) {
    FakeLink link;
    ComPtr<Outer> outer(new Outer);
    ComPtr<IPreprocessorImpl> preprocessor;
    ASSERT_EQ(outer.As(&preprocessor), S_OK);
    ASSERT_EQ(preprocessor->put_Communicator(link.communicator()), S_OK);
    outer.Reset();
    link.onCall = [&](const std::string&) { preprocessor.Reset(); };
    VARIANT_BOOL result = VARIANT_FALSE;
    IPreprocessorImpl* running = preprocessor.Get();
    EXPECT_EQ(running->PreprocessAndRun(com::Bstr(L"one\n#WAIT\n##DATE()").get(), &result), S_OK);
    EXPECT_EQ(result, VARIANT_TRUE);
}

TEST(Object, RefusesToTellItsEventsToNobody) {
    const auto object = kelUtils().create<IProvideClassInfo2>(CLSID_Preprocessor);
    GUID source = IID_IUnknown;
    EXPECT_EQ(object->GetClassInfo(nullptr), E_POINTER);
    EXPECT_EQ(object->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, nullptr), E_POINTER);
    EXPECT_EQ(object->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID + 1, &source), E_INVALIDARG);
}

// What an exception inside becomes at the border.
TEST(Guard, TurnsExceptionsIntoCodesAndErrorInfo) {
    const struct {
        std::function<void()> thrower;
        HRESULT code;
        IID interfaceId;
        const wchar_t* description;
    } rows[] = {
        {[] { throw com::Error(E_ABORT, L"text"); }, E_ABORT, IID_IPreprocessor, L"text"},
        {[] { throw com::Error(E_ABORT, L"x", IID_IKelStream); }, E_ABORT, IID_IKelStream, L"x"},
        {[] { throw std::bad_alloc(); }, E_OUTOFMEMORY, IID_IPreprocessor, nullptr},
        {[] { throw std::length_error("big"); }, E_OUTOFMEMORY, IID_IPreprocessor, nullptr},
        {[] { throw std::runtime_error("why"); }, E_FAIL, IID_IPreprocessor, L"why"},
        {[] { throw 1; }, E_UNEXPECTED, IID_IPreprocessor, nullptr},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(com::guard(IID_IPreprocessor, L"Source.1", row.thrower), row.code);
        const auto error = takeError();
        ASSERT_TRUE(error);
        EXPECT_EQ(error->interfaceId, row.interfaceId);
        EXPECT_EQ(error->source, L"Source.1");
        if (row.description) {
            EXPECT_EQ(error->description, row.description);
        } else {
            EXPECT_NE(error->description, L"");
        }
    }
}

}  // namespace
}  // namespace kel::test
