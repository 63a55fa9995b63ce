// The sound card side on a machine without one: opening fails the way a window can explain,
// and a capture device that does not exist has no card.
#include "AlsaMixerWeb.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace vocato::test {
namespace {

TEST(AlsaMixerWeb, AMissingCardIsReportedWithItsNumberAndAMissingCaptureDeviceHasNoCard) {
    EXPECT_EQ(media::AlsaCardOfCaptureDevice("nonexistent_device_xyz"), -1);
    for (int card : {99, 0}) {
        SCOPED_TRACE(card);
        if (card == 0 && ::access("/dev/snd/controlC0", F_OK) == 0) {
            GTEST_SKIP() << "this machine has a sound card";
        }
        const media::MixerWebResult result = media::OpenAlsaMixerWeb(card);
        EXPECT_EQ(result.failure, media::MixerWebResult::Failure::NoCard);
        EXPECT_EQ(result.card, card);
        EXPECT_LT(result.status, 0);
        EXPECT_FALSE(result.statusText.empty());
        EXPECT_EQ(result.web, nullptr);
    }
}

} // namespace
} // namespace vocato::test
