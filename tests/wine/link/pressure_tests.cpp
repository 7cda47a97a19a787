#include "tests/wine/link/access_test.h"
#include "tests/wine/support/refusals.h"

namespace kel::bench::test {
namespace {

class PressureTest : public AccessTest {
protected:
    void attach() {
        access = create<IPressureAccess>(link::kPressureAccessClass);
        ASSERT_EQ(access->Attach(link.Get()), S_OK);
    }
    void TearDown() override {
        access.Reset();
        AccessTest::TearDown();
    }

    bool start() { return get(access, &IPressureAccess::StartCollection) == VARIANT_TRUE; }
    bool stop() { return get(access, &IPressureAccess::StopCollection) == VARIANT_TRUE; }
    bool isNew() { return get(access, &IPressureAccess::get_NewData) == VARIANT_TRUE; }
    double current() { return get(access, &IPressureAccess::get_CurrentPressure); }
    double mean() { return get(access, &IPressureAccess::get_MeanPressure); }
    double offset() { return get(access, &IPressureAccess::get_Offset); }

    void collectUntil(double pressure) {
        while (current() < pressure)
            isNew();
    }

    ComPtr<IPressureAccess> access;
};

TEST_F(PressureTest, TheMeanIsThatOfASingleCollection) {
    InstrumentOptions options;
    options.sensors = {10, 0, 1, true};
    connect(options);
    attach();
    EXPECT_EQ(mean(), 0);
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(start());
        EXPECT_EQ(echoWindow(), 0);
        collectUntil(40);
        EXPECT_EQ(offset(), 0) << "nothing is asked while lines come";
        collectUntil(60);
        EXPECT_TRUE(stop());
        EXPECT_EQ(echoWindow(), window.number());
        while (isNew())
            continue;
        // The mean of what rises evenly lies in the middle.
        EXPECT_NEAR(2 * mean() - current(), 12.634, 0.05);
        EXPECT_TRUE(stop());
    }
    EXPECT_EQ(window.shown(), L"");
    EXPECT_TRUE(tell(L"pressoffset set -1.25"));
    EXPECT_EQ(offset(), -1.25);
}

TEST_F(PressureTest, ASilentInstrumentIsTold) {
    InstrumentOptions silent;
    silent.silent = true;
    connect(silent, 1, L"1000");
    attach();
    EXPECT_FALSE(start());
    double value = 1;
    EXPECT_EQ(access->get_Offset(&value), E_FAIL);
    EXPECT_EQ(kel::test::takeError()->description, L"The instrument does not answer");

    link->put_Port(nullptr);
    EXPECT_FALSE(start());
    VARIANT_BOOL result = VARIANT_TRUE;
    access->Attach(nullptr);
    EXPECT_EQ(access->StartCollection(&result), E_FAIL);
    EXPECT_EQ(result, VARIANT_FALSE);
    kel::test::expectNullPointersRefused(access.Get());
}

TEST_F(PressureTest, ALostPortIsToldOnce) {
    connect();
    attach();
    ASSERT_TRUE(start());
    stream->Close();
    VARIANT_BOOL value = VARIANT_TRUE;
    EXPECT_EQ(access->get_NewData(&value), E_FAIL);
    EXPECT_EQ(echoWindow(), window.number());
    EXPECT_FALSE(isNew());
    EXPECT_TRUE(stop());
}

TEST_F(PressureTest, WhatComesInTheMiddleIsRefused) {
    InstrumentOptions options;
    options.slow = std::chrono::milliseconds(100);
    connect(options, 2);
    attach();
    VARIANT_BOOL result = VARIANT_TRUE;
    HRESULT code = S_OK;
    bool isNewInTheMiddle = true;
    window.post([&] {
        isNewInTheMiddle = isNew();
        code = access->StopCollection(&result);
    });
    EXPECT_TRUE(start());
    EXPECT_FALSE(isNewInTheMiddle);
    EXPECT_EQ(code, HRESULT_FROM_WIN32(ERROR_BUSY));
    // Who goes without a stop leaves an instrument that answers, and the window that was put.
    stream->put_EchoWindow(5);
    access.Reset();
    EXPECT_EQ(echoWindow(), 5);
    Bstr rest;
    EXPECT_EQ(stream->WaitForString(Bstr(L"\r\n>").get(), 30000, nullptr, rest.put(), &result),
              S_OK);
    EXPECT_EQ(result, VARIANT_TRUE);
    stream->put_EchoWindow(window.number());
    EXPECT_TRUE(tell(L"set rate 4"));
}

}  // namespace
}  // namespace kel::bench::test
