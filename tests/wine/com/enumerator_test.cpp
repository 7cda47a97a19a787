#include <gtest/gtest.h>

#include "com/object.h"
#include "com/variant_enumerator.h"
#include "interfaces/KelUtils.h"

namespace kel::test {
namespace {

using com::ComPtr;

// The numbers from zero; how many may change while somebody walks them.
class Numbers final : public com::Object<Numbers, com::Dual<IFlatCollection>> {
public:
    static constexpr com::ClassDescription kClass{};
    ULONG count = 3;

    STDMETHODIMP get_Count(long* result) override { return *result = count, S_OK; }
    STDMETHODIMP get_Item(VARIANT, VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Name(long, BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP Add(BSTR, VARIANT) override { return E_NOTIMPL; }
    STDMETHODIMP get__NewEnum(IUnknown** enumerator) override {
        return guarded<IFlatCollection>([&] {
            com::out(enumerator) = com::VariantEnumerator::make(
                controlling(), [this] { return count; },
                [](ULONG index) {
                    if (index == 7) throw com::Error(E_ABORT);
                    return com::Variant(static_cast<long>(index));
                });
        });
    }
};

class Enumerator : public testing::Test {
protected:
    // As script languages ask for it: as a method.
    Enumerator() {
        DISPPARAMS none = {};
        com::Variant result;
        EXPECT_EQ(numbers_->Invoke(DISPID_NEWENUM, IID_NULL, 0, DISPATCH_METHOD, &none,
                                   result.put(), nullptr, nullptr),
                  S_OK);
        EXPECT_EQ(result.type(), VT_UNKNOWN);
        EXPECT_EQ(result.get().punkVal->QueryInterface(IID_PPV_ARGS(&walk_)), S_OK);
    }

    // What the next call gives: the numbers, then the code if it is not S_OK.
    static std::string next(IEnumVARIANT* walk, ULONG wanted) {
        VARIANT values[10];
        ULONG fetched = 99;
        const HRESULT code = walk->Next(wanted, values, &fetched);
        std::string text;
        for (ULONG i = 0; i < fetched; ++i)
            text += std::to_string(values[i].lVal) + " ";
        return code == S_OK ? text : text + (code == S_FALSE ? "end" : "failed");
    }

    ComPtr<Numbers> numbers_ = com::makeObject<Numbers>();
    ComPtr<IEnumVARIANT> walk_;
};

TEST_F(Enumerator, WalksSkipsAndStartsAgain) {
    EXPECT_EQ(next(walk_.Get(), 2), "0 1 ");
    EXPECT_EQ(next(walk_.Get(), 2), "2 end");
    EXPECT_EQ(next(walk_.Get(), 1), "end");
    EXPECT_EQ(walk_->Reset(), S_OK);
    EXPECT_EQ(walk_->Skip(1), S_OK);
    ComPtr<IEnumVARIANT> clone;
    ASSERT_EQ(walk_->Clone(&clone), S_OK);
    EXPECT_EQ(next(walk_.Get(), 1), "1 ");
    EXPECT_EQ(next(clone.Get(), 3), "1 2 end");
    EXPECT_EQ(walk_->Skip(2), S_FALSE);
    EXPECT_EQ(walk_->Next(1, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(walk_->Clone(nullptr), E_POINTER);
}

TEST_F(Enumerator, SeesChangesKeepsTheCollectionAndTellsFailures) {
    EXPECT_EQ(next(walk_.Get(), 3), "0 1 2 ");
    numbers_->count = 9;
    EXPECT_EQ(next(walk_.Get(), 1), "3 ");
    EXPECT_EQ(next(walk_.Get(), 6), "4 5 6 failed");
    numbers_->count = 1;
    EXPECT_EQ(walk_->Skip(1), S_FALSE);
    EXPECT_EQ(next(walk_.Get(), 1), "end");
    numbers_.Reset();
    EXPECT_EQ(walk_->Reset(), S_OK);
    EXPECT_EQ(next(walk_.Get(), 1), "0 ");
}

}  // namespace
}  // namespace kel::test
