#include "ui/link_settings.h"

#include <gtest/gtest.h>

#include "tests/wine/support/fake_link.h"

namespace kel::ui {
namespace {

TEST(LinkSettingsTest, StayAsTheyAreWhereThePortFails) {
    test::FakeLink link;
    link.failMethod(L"put_EchoWindow");
    { const LinkSettings settings(link.port()); }
    EXPECT_EQ(link.takeWork(), "EchoWindow\nIdleProcessing\nEchoWindow = 0\nIdleProcessing = -1\n")
        << "the second setting is restored all the same";
}

}  // namespace
}  // namespace kel::ui
