#pragma once
// Expects that a dual interface refuses null pointers for its results.

#include <gtest/gtest.h>

#include "tests/support/null_pointers.h"

namespace kel::test {

// `object` is the dual interface itself, as its QueryInterface gives it.
inline void expectNullPointersRefused(IDispatch* object) {
    com::ComPtr<ITypeInfo> type;
    ASSERT_EQ(object->GetTypeInfo(0, 0, &type), S_OK);
    EXPECT_EQ(acceptedNullPointers(object, type), "");
}

}  // namespace kel::test
