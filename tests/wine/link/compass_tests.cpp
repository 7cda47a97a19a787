#include "tests/wine/link/access_test.h"
#include "tests/wine/support/refusals.h"

namespace kel::bench::test {
namespace {

class CompassTest : public AccessTest {
protected:
    void attach() {
        access = create<ICompassAccess>(link::kCompassAccessClass);
        ASSERT_EQ(access->Attach(link.Get()), S_OK);
    }
    void TearDown() override {
        access.Reset();
        AccessTest::TearDown();
    }

    bool is(HRESULT (STDMETHODCALLTYPE ICompassAccess::*member)(VARIANT_BOOL*)) {
        return get(access, member) == VARIANT_TRUE;
    }

    // "horizontal vertical field"; empty when there are none.
    std::string scores() {
        long horizontal = 0;
        long vertical = 0;
        double field = 0;
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ(access->ReadScores(&horizontal, &vertical, &field, &result), S_OK);
        if (result == VARIANT_FALSE) return "";
        return std::to_string(horizontal) + " " + std::to_string(vertical) + " " +
               std::to_string(field);
    }

    ComPtr<ICompassAccess> access;
};

TEST_F(CompassTest, ACalibrationShowsWhereItTurnsAndIsScored) {
    connect({}, 500);
    attach();
    EXPECT_FALSE(is(&ICompassAccess::get_Present));
    EXPECT_TRUE(is(&ICompassAccess::Initialise));
    EXPECT_TRUE(is(&ICompassAccess::get_Present));
    EXPECT_EQ(scores(), "");
    EXPECT_TRUE(is(&ICompassAccess::StartCalibration));
    EXPECT_TRUE(is(&ICompassAccess::get_Calibrating));
    EXPECT_EQ(echoWindow(), 0);
    // Half a turn and more: past north, with pitch and roll swinging against each other.
    double highest = 0;
    double heading = 360;
    while (highest < 350 || heading > 100) {
        if (is(&ICompassAccess::get_Busy)) continue;
        heading = get(access, &ICompassAccess::get_Heading);
        highest = std::max(highest, heading);
        const double pitch = get(access, &ICompassAccess::get_Pitch);
        EXPECT_NEAR(pitch + get(access, &ICompassAccess::get_Roll), 0.7, 0.6);
    }
    EXPECT_EQ(scores(), "") << "while it runs";
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(access->StopCalibration(), S_OK);
    EXPECT_FALSE(is(&ICompassAccess::get_Calibrating));
    EXPECT_EQ(echoWindow(), window.number());
    EXPECT_EQ(window.shown(), L"");
    EXPECT_TRUE(scores().ends_with(" 12.500000"));
    EXPECT_GE(scores(), "2 1");
}

TEST_F(CompassTest, ABreakOfSomebodyElseEndsACalibration) {
    connect();
    attach();
    ASSERT_TRUE(is(&ICompassAccess::StartCalibration));
    EXPECT_EQ(stream->SendBreak(1), S_OK);
    while (is(&ICompassAccess::get_Calibrating))
        continue;
    EXPECT_EQ(echoWindow(), window.number());
    EXPECT_EQ(scores(), "0 0 12.500000");
}

TEST_F(CompassTest, OneThatIsMissingIsTold) {
    InstrumentOptions blind;
    blind.sensors.compass = false;
    connect(blind);
    attach();
    EXPECT_FALSE(is(&ICompassAccess::Initialise));
    EXPECT_FALSE(is(&ICompassAccess::StartCalibration));
    EXPECT_EQ(scores(), "");
    EXPECT_TRUE(is(&ICompassAccess::get_Busy));
    kel::test::expectNullPointersRefused(access.Get());
}

}  // namespace
}  // namespace kel::bench::test
