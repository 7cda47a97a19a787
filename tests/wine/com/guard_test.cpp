#include "com/object.h"

#include <gtest/gtest.h>

#include "interfaces/KelUtils.h"
#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

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
        EXPECT_EQ(error->description, row.description ? row.description : error->description);
        EXPECT_NE(error->description, L"");
    }
}

}  // namespace
}  // namespace kel::test
