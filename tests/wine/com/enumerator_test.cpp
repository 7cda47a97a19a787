#include <gtest/gtest.h>

#include "com/collection.h"
#include "com/variant_enumerator.h"

namespace kel::test {
namespace {

using com::ComPtr;

// Walks numbers from zero; how many there are may change meanwhile, and the eighth one fails.
class Enumerator : public testing::Test {
protected:
    Enumerator() {
        ComPtr<IUnknown> made;
        *made.GetAddressOf() = com::VariantEnumerator::make(
            com::makeObject<com::Collection>()->controlling(), [this] { return count_; },
            [](ULONG index) {
                if (index == 7) throw com::Error(E_ABORT);
                return com::Variant(static_cast<long>(index));
            });
        EXPECT_EQ(made.As(&walk_), S_OK);
        EXPECT_EQ(com::moduleLocks(), 2) << "it keeps the collection";
    }

    // What the next call gives: the numbers, then the code if it is not S_OK.
    static std::string next(const ComPtr<IEnumVARIANT>& walk, ULONG wanted) {
        VARIANT values[10];
        ULONG fetched = 99;
        const HRESULT code = walk->Next(wanted, values, &fetched);
        std::string text;
        for (ULONG i = 0; i < fetched; ++i)
            text += std::to_string(values[i].lVal) + " ";
        return code == S_OK ? text : text + (code == S_FALSE ? "end" : "failed");
    }

    ULONG count_ = 3;
    ComPtr<IEnumVARIANT> walk_;
};

TEST_F(Enumerator, WalksSkipsAndStartsAgain) {
    EXPECT_EQ(next(walk_, 2), "0 1 ");
    EXPECT_EQ(next(walk_, 2), "2 end");
    EXPECT_EQ(next(walk_, 1), "end");
    EXPECT_EQ(walk_->Reset(), S_OK);
    EXPECT_EQ(walk_->Skip(1), S_OK);
    ComPtr<IEnumVARIANT> clone;
    ASSERT_EQ(walk_->Clone(&clone), S_OK);
    EXPECT_EQ(next(walk_, 1), "1 ");
    EXPECT_EQ(next(clone, 3), "1 2 end");
    EXPECT_EQ(walk_->Skip(2), S_FALSE);
    EXPECT_EQ(walk_->Next(1, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(walk_->Clone(nullptr), E_POINTER);
}

TEST_F(Enumerator, SeesChangesAndTellsFailures) {
    EXPECT_EQ(next(walk_, 3), "0 1 2 ");
    count_ = 9;
    EXPECT_EQ(next(walk_, 1), "3 ");
    EXPECT_EQ(next(walk_, 6), "4 5 6 failed");
    count_ = 1;
    EXPECT_EQ(walk_->Skip(1), S_FALSE);
    EXPECT_EQ(next(walk_, 1), "end");
}

}  // namespace
}  // namespace kel::test
