#include "ui/link_settings.h"

#include <gtest/gtest.h>

#include "tests/wine/support/fake_link.h"

namespace kel::ui {
namespace {

TEST(LinkSettingsTest, AreRestoredOnEveryWayOut) {
    test::FakeLink link;
    link.echoWindow = 42;
    EXPECT_THROW(
        {
            const LinkSettings settings(link.port());
            link.port()->put_EchoWindow(0);
            link.port()->put_IdleProcessing(VARIANT_FALSE);
            throw com::Error(E_FAIL);
        },
        com::Error);
    EXPECT_EQ(link.takeWork(),
              "EchoWindow\nIdleProcessing\nEchoWindow = 0\nIdleProcessing = 0\n"
              "EchoWindow = 42\nIdleProcessing = -1\n");
}

TEST(LinkSettingsTest, StayAsTheyAreWhereThePortFails) {
    test::FakeLink link;
    link.failMethod(L"put_EchoWindow");
    { const LinkSettings settings(link.port()); }
    EXPECT_EQ(link.takeWork(), "EchoWindow\nIdleProcessing\nEchoWindow = 0\nIdleProcessing = -1\n")
        << "the second setting is restored all the same";
}

}  // namespace
}  // namespace kel::ui
