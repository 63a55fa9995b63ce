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
using Controls = std::map<MixerControl, FakeControl>;

struct FakeElement final : media::MixerElement {
    FakeElement(std::string name, unsigned index, Controls& controls,
                std::vector<std::string> items = {})
        : name(std::move(name)), index(index), controls(controls), items(std::move(items)) {}

    std::string Name() const override { return name; }
    unsigned Index() const override { return index; }
    bool Has(MixerControl c) const override { return controls.count(c) != 0; }
    bool Range(MixerControl c, long* minimum, long* maximum) const override {
        *minimum = controls.at(c).minimum;
        *maximum = controls.at(c).maximum;
        return true;
    }
    std::vector<std::string> Items() const override { return items; }
    int Channels(MixerControl c) const override {
        return static_cast<int>(controls.at(c).channels.size());
    }
    bool Get(MixerControl c, int channel, long* value) const override {
        *value = controls.at(c).channels.at(static_cast<size_t>(channel));
        return true;
    }
    bool Set(MixerControl c, int channel, long value) override {
        controls.at(c).channels.at(static_cast<size_t>(channel)) = value;
        return !controls.at(c).refuses;
    }

    std::string name;
    unsigned index;
    Controls& controls;
    std::vector<std::string> items;
};

// Every element's controls stay with the test, which looks at them after the web wrote. The
// web's groups: Master, Capture 1, Input Source, Mic (Beep has nothing to control).
class MixerWebTest : public ::testing::Test {
protected:
    static std::vector<std::unique_ptr<media::MixerElement>> Elements(MixerWebTest& t) {
        std::vector<std::unique_ptr<media::MixerElement>> elements;
        elements.push_back(std::make_unique<FakeElement>("Master", 0, t.master));
        elements.push_back(std::make_unique<FakeElement>("Beep", 0, t.nothing));
        elements.push_back(std::make_unique<FakeElement>("Capture", 1, t.capture));
        elements.push_back(std::make_unique<FakeElement>(
            "Input Source", 0, t.source, std::vector<std::string>{"Mic", "Line", "CD"}));
        elements.push_back(std::make_unique<FakeElement>("Mic", 0, t.flat));
        return elements;
    }
    const media::Parameter& Named(size_t group, const std::string& name) const {
        for (const media::Parameter& p : web.Groups().at(group).parameters) {
            if (p.name == name) {
                return p;
            }
        }
        throw std::runtime_error("no parameter " + name);
    }
    int32_t Id(size_t group, const std::string& name) const { return Named(group, name).id; }

    Controls master{
        {MixerControl::PlaybackVolume, {0, 87, {60, 40}}},
        {MixerControl::PlaybackDecibels, {-6525, 0, {-1500, -3000}}},
        {MixerControl::PlaybackSwitch, {0, 1, {1, 0}}},
    };
    Controls capture{
        {MixerControl::CaptureVolume, {0, 31, {7, 9}}},
        {MixerControl::CaptureSwitch, {0, 1, {0, 0}}},
    };
    Controls flat = [this] {
        Controls c = capture;
        c[MixerControl::CaptureDecibels] = {0, 0, {0}};
        return c;
    }();
    Controls source{{MixerControl::Item, {0, 2, {1, 1}}}};
    Controls nothing;
    media::MixerWeb web{Elements(*this)};
};

TEST_F(MixerWebTest, OneGroupPerElementWithSomethingToControlNamedWithItsIndex) {
    ASSERT_EQ(web.Groups().size(), 4u);
    EXPECT_EQ(web.Groups()[0].name, "Master");
    EXPECT_EQ(web.Groups()[1].name, "Capture 1");
    EXPECT_EQ(web.Groups()[2].name, "Input Source");
    EXPECT_EQ(web.ParameterCount(), 7u);
    EXPECT_EQ(Named(0, "Playback switch").kind, media::ParameterKind::Switch);
    EXPECT_EQ(Named(1, "Capture switch").kind, media::ParameterKind::Switch);
    const media::Parameter& choice = Named(2, "Input Source");
    ASSERT_EQ(choice.kind, media::ParameterKind::Discrete);
    ASSERT_EQ(choice.items.size(), 3u);
    EXPECT_EQ(choice.items[2].name, "CD");
    EXPECT_EQ(choice.items[2].value, 2);
}

TEST_F(MixerWebTest, VolumesAreInDecibelsWhenTheElementHasAScaleAndInRawStepsOtherwise) {
    const media::Parameter& db = Named(0, "Playback volume");
    EXPECT_EQ(db.kind, media::ParameterKind::Continuous);
    EXPECT_EQ(db.unit, "dB");
    EXPECT_FLOAT_EQ(db.minimum, -65.25f);
    EXPECT_FLOAT_EQ(db.maximum, 0.0f);
    for (size_t group : {1, 3}) {
        const media::Parameter& raw = Named(group, "Capture volume");
        EXPECT_EQ(raw.unit, "") << "a scale without a span counts as none";
        EXPECT_EQ(raw.minimum, 0.0f);
        EXPECT_EQ(raw.maximum, 31.0f);
        EXPECT_EQ(raw.step, 1.0f);
    }
}

TEST_F(MixerWebTest, ValuesAreReadFromTheFirstChannelAndWrittenToAll) {
    const std::pair<int32_t, float> read[] = {{Id(0, "Playback volume"), -15.0f},
                                              {Id(0, "Playback switch"), 1.0f},
                                              {Id(1, "Capture volume"), 7.0f},
                                              {Id(2, "Input Source"), 1.0f}};
    for (auto [id, expected] : read) {
        float value = 0.0f;
        ASSERT_TRUE(web.GetValue(id, &value)) << id;
        EXPECT_FLOAT_EQ(value, expected) << id;
    }
    EXPECT_TRUE(web.SetValue(Id(0, "Playback volume"), -12.5f));
    EXPECT_EQ(master[MixerControl::PlaybackDecibels].channels, (std::vector<long>{-1250, -1250}));
    EXPECT_TRUE(web.SetValue(Id(0, "Playback switch"), 0.0f));
    EXPECT_EQ(master[MixerControl::PlaybackSwitch].channels, (std::vector<long>{0, 0}));
    EXPECT_TRUE(web.SetValue(Id(1, "Capture volume"), 20.0f));
    EXPECT_EQ(capture[MixerControl::CaptureVolume].channels, (std::vector<long>{20, 20}));
    EXPECT_TRUE(web.SetValue(Id(2, "Input Source"), 2.0f));
    EXPECT_EQ(source[MixerControl::Item].channels, (std::vector<long>{2, 2}));
}

TEST_F(MixerWebTest, VolumesStayInTheirRangeAndImpossibleChangesAreRefused) {
    const int32_t volume = Id(0, "Playback volume");
    const int32_t choice = Id(2, "Input Source");
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
