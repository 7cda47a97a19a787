// Runs the tests of a room and looks for leaks after each: no object of a library under test and no
// double may outlive a test.
#include <gtest/gtest.h>
#include <winsock2.h>

#include "com/module.h"
#include "tests/wine/support/library.h"

namespace {

class LeakCheck : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { SetErrorInfo(0, nullptr); }
    void OnTestEnd(const testing::TestInfo&) override {
        for (const kel::test::Library* library : kel::test::Library::loaded()) {
            EXPECT_EQ(library->canUnloadNow(), S_OK) << "objects of a library are left";
        }
        EXPECT_EQ(kel::com::moduleLocks(), 0) << "references to doubles are left";
    }
};

}  // namespace

int main(int argumentCount, char** arguments) {
    testing::InitGoogleTest(&argumentCount, arguments);
    if (FAILED(OleInitialize(nullptr))) return 70;
    WSADATA sockets;
    if (WSAStartup(MAKEWORD(2, 2), &sockets) != 0) return 70;
    // The doubles are late-bound through the type library of the library under test.
    kel::com::attachModule(kel::test::kelUtils().module());
    testing::UnitTest::GetInstance()->listeners().Append(new LeakCheck);
    const int result = RUN_ALL_TESTS();
    kel::com::detachModule();
    WSACleanup();
    OleUninitialize();
    return result;
}
