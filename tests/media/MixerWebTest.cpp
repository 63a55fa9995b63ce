// The mixer panel built from elements that stand in for a sound card's, which CI has none of.
#include "MixerWeb.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace vocato::test {
namespace {

using media::MixerControl;

struct FakeControl {
    long minimum = 0;
    long maximum = 0;
    std::vector<long> channels{0};
    bool refuses = false;
};

class FakeElement final : public media::MixerElement {
public:
    FakeElement(std::string name, unsigned index, std::map<MixerControl, FakeControl>& controls)
        : name_(std::move(name)), index_(index), controls_(controls) {}

    std::string Name() const override { return name_; }
    unsigned Index() const override { return index_; }
    bool Has(MixerControl c) const override { return controls_.count(c) != 0; }
    bool Range(MixerControl c, long* minimum, long* maximum) const override {
        const FakeControl& control = controls_.at(c);
        *minimum = control.minimum;
        *maximum = control.maximum;
        return true;
    }
    std::vector<std::string> Items() const override { return items; }
    int Channels(MixerControl c) const override {
        return static_cast<int>(controls_.at(c).channels.size());
    }
    bool Get(MixerControl c, int channel, long* value) const override {
        *value = controls_.at(c).channels.at(static_cast<size_t>(channel));
        return true;
    }
    bool Set(MixerControl c, int channel, long value) override {
        FakeControl& control = controls_.at(c);
        control.channels.at(static_cast<size_t>(channel)) = value;
        return !control.refuses;
    }

    std::vector<std::string> items;

private:
    std::string name_;
    unsigned index_;
    std::map<MixerControl, FakeControl>& controls_;
};

// Each element's controls stay with the test, which looks at them after the web wrote.
class MixerWebTest : public ::testing::Test {
protected:
    FakeElement& Add(const std::string& name, unsigned index,
                     std::map<MixerControl, FakeControl>& controls) {
        elements.push_back(std::make_unique<FakeElement>(name, index, controls));
        return static_cast<FakeElement&>(*elements.back());
    }
    media::MixerWeb Build() { return media::MixerWeb(std::move(elements)); }

    std::map<MixerControl, FakeControl> master{
        {MixerControl::PlaybackVolume, {0, 87, {60, 40}}},
        {MixerControl::PlaybackDecibels, {-6525, 0, {-1500, -3000}}},
        {MixerControl::PlaybackSwitch, {0, 1, {1, 0}}},
    };
    std::map<MixerControl, FakeControl> capture{
        {MixerControl::CaptureVolume, {0, 31, {7, 9}}},
        {MixerControl::CaptureSwitch, {0, 1, {0, 0}}},
    };
    std::map<MixerControl, FakeControl> source{{MixerControl::Item, {0, 2, {1, 1}}}};
    std::map<MixerControl, FakeControl> nothing;
    std::vector<std::unique_ptr<media::MixerElement>> elements;
};

const media::Parameter& Named(const media::ParameterGroup& group, const std::string& name) {
    for (const media::Parameter& p : group.parameters) {
        if (p.name == name) {
            return p;
        }
    }
    throw std::runtime_error("no parameter " + name + " in " + group.name);
}

TEST_F(MixerWebTest, OneGroupPerElementWithSomethingToControlNamedWithItsIndex) {
    Add("Master", 0, master);
    Add("Beep", 0, nothing);
    Add("Capture", 1, capture);
    Add("Input Source", 0, source).items = {"Mic", "Line", "CD"};
    const media::MixerWeb web = Build();
    ASSERT_EQ(web.Groups().size(), 3u);
    EXPECT_EQ(web.Groups()[0].name, "Master");
    EXPECT_EQ(web.Groups()[1].name, "Capture 1");
    EXPECT_EQ(web.Groups()[2].name, "Input Source");
    EXPECT_EQ(web.ParameterCount(), 5u);

    const media::Parameter& on = Named(web.Groups()[0], "Playback switch");
    EXPECT_EQ(on.kind, media::ParameterKind::Switch);
    EXPECT_EQ(Named(web.Groups()[1], "Capture switch").kind, media::ParameterKind::Switch);
    const media::Parameter& choice = Named(web.Groups()[2], "Input Source");
    ASSERT_EQ(choice.kind, media::ParameterKind::Discrete);
    ASSERT_EQ(choice.items.size(), 3u);
    EXPECT_EQ(choice.items[2].name, "CD");
    EXPECT_EQ(choice.items[2].value, 2);
}

TEST_F(MixerWebTest, VolumesAreInDecibelsWhenTheElementHasAScaleAndInRawStepsOtherwise) {
    Add("Master", 0, master);
    Add("Capture", 0, capture);
    std::map<MixerControl, FakeControl> flat = capture;
    flat[MixerControl::CaptureDecibels] = {0, 0, {0}};
    Add("Mic", 0, flat);
    const media::MixerWeb web = Build();

    const media::Parameter& db = Named(web.Groups()[0], "Playback volume");
    EXPECT_EQ(db.kind, media::ParameterKind::Continuous);
    EXPECT_EQ(db.unit, "dB");
    EXPECT_FLOAT_EQ(db.minimum, -65.25f);
    EXPECT_FLOAT_EQ(db.maximum, 0.0f);
    for (int group : {1, 2}) {
        const media::Parameter& raw = Named(web.Groups()[group], "Capture volume");
        EXPECT_EQ(raw.unit, "") << "a scale without a span counts as none";
        EXPECT_EQ(raw.minimum, 0.0f);
        EXPECT_EQ(raw.maximum, 31.0f);
        EXPECT_EQ(raw.step, 1.0f);
    }
}

TEST_F(MixerWebTest, ValuesAreReadFromTheFirstChannelAndWrittenToAll) {
    Add("Master", 0, master);
    Add("Capture", 0, capture);
    Add("Input Source", 0, source).items = {"Mic", "Line", "CD"};
    media::MixerWeb web = Build();
    const int32_t volume = Named(web.Groups()[0], "Playback volume").id;
    const int32_t on = Named(web.Groups()[0], "Playback switch").id;
    const int32_t raw = Named(web.Groups()[1], "Capture volume").id;
    const int32_t choice = Named(web.Groups()[2], "Input Source").id;

    float value = 0.0f;
    ASSERT_TRUE(web.GetValue(volume, &value));
    EXPECT_FLOAT_EQ(value, -15.0f);
    ASSERT_TRUE(web.GetValue(on, &value));
    EXPECT_EQ(value, 1.0f);
    ASSERT_TRUE(web.GetValue(raw, &value));
    EXPECT_EQ(value, 7.0f);
    ASSERT_TRUE(web.GetValue(choice, &value));
    EXPECT_EQ(value, 1.0f);

    EXPECT_TRUE(web.SetValue(volume, -12.5f));
    EXPECT_EQ(master[MixerControl::PlaybackDecibels].channels, (std::vector<long>{-1250, -1250}));
    EXPECT_TRUE(web.SetValue(on, 0.0f));
    EXPECT_EQ(master[MixerControl::PlaybackSwitch].channels, (std::vector<long>{0, 0}));
    EXPECT_TRUE(web.SetValue(raw, 20.0f));
    EXPECT_EQ(capture[MixerControl::CaptureVolume].channels, (std::vector<long>{20, 20}));
    EXPECT_TRUE(web.SetValue(choice, 2.0f));
    EXPECT_EQ(source[MixerControl::Item].channels, (std::vector<long>{2, 2}));
}

TEST_F(MixerWebTest, VolumesStayInTheirRangeAndImpossibleChangesAreRefused) {
    Add("Master", 0, master);
    Add("Input Source", 0, source).items = {"Mic", "Line", "CD"};
    media::MixerWeb web = Build();
    const int32_t volume = Named(web.Groups()[0], "Playback volume").id;
    const int32_t choice = Named(web.Groups()[1], "Input Source").id;

    // A muted scale reads as minus infinity.
    master[MixerControl::PlaybackDecibels].channels[0] = -9999999;
    float value = 0.0f;
    ASSERT_TRUE(web.GetValue(volume, &value));
    EXPECT_FLOAT_EQ(value, -65.25f);
    EXPECT_TRUE(web.SetValue(volume, 12.0f));
    EXPECT_EQ(master[MixerControl::PlaybackDecibels].channels, (std::vector<long>{0, 0}));

    EXPECT_FALSE(web.SetValue(choice, 3.0f));
    EXPECT_FALSE(web.SetValue(choice, -1.0f));
    EXPECT_EQ(source[MixerControl::Item].channels, (std::vector<long>{1, 1}));
    EXPECT_FALSE(web.SetValue(42, 1.0f));
    EXPECT_FALSE(web.GetValue(42, &value));
    EXPECT_FALSE(web.GetValue(0, &value));

    master[MixerControl::PlaybackDecibels].refuses = true;
    EXPECT_FALSE(web.SetValue(volume, -6.0f)) << "the card refused";
}

} // namespace
} // namespace vocato::test
