#include "NodeRig.h"

#include "VocatoAddOn.h"

#include <gtest/gtest.h>

namespace midi = vocato::media::midi;
using namespace vocato;
using vocato::test::NodeRig;

TEST(Connection, TheSingleRawAudioInputTakesOneConnectionAtItsOwnDestinationOnly) {
    NodeRig rig;
    int32_t cookie = 0;
    media::MediaInput input;
    EXPECT_EQ(rig.node->GetNextInput(&cookie, &input), media::kOk);
    EXPECT_EQ(cookie, 1);
    EXPECT_EQ(input.name, "Vocato");
    EXPECT_EQ(input.format.type, media::MediaType::RawAudio);
    EXPECT_EQ(rig.node->GetNextInput(&cookie, &input), media::kBadIndex);

    const media::MediaDestination elsewhere{5, 5};
    media::MediaFormat format;
    media::MediaInput out;
    int64_t latency = 0;
    EXPECT_EQ(rig.node->AcceptFormat(elsewhere, &format), media::kBadDestination);
    EXPECT_EQ(rig.node->Connected({1, 1}, elsewhere, format, &out), media::kBadDestination);
    EXPECT_EQ(rig.node->GetLatencyFor(elsewhere, &latency), media::kBadDestination);
    EXPECT_EQ(rig.node->GetLatencyFor({0, 0}, &latency), media::kOk);
    EXPECT_EQ(latency, 1000);

    input = rig.Connect();
    EXPECT_TRUE(rig.window.oscilloBuffer.Attached());
    EXPECT_EQ(rig.node->Connected({2, 2}, input.destination, format, &out), media::kBadDestination);
    rig.node->Disconnected(input.source, input.destination);
    EXPECT_FALSE(rig.window.oscilloBuffer.Attached());
    EXPECT_EQ(rig.node->Connected({2, 2}, input.destination, format, &out), media::kOk);
}

TEST(Connection, AProgramSilencesEveryKeyThenGoesOutAsItsLow8BitsOnChannelOneAsStartRepeatsIt) {
    NodeRig rig({.channel = 7});
    rig.sink.Clear();
    rig.Set(PARAM_PROGRAM, 300);
    const auto& sent = rig.sink.sent;
    ASSERT_EQ(sent.size(), 16u * (1 + 128) + 1);
    EXPECT_EQ(sent.front(), midi::ControlChange(1, 123, 0));
    EXPECT_EQ(sent[1], midi::NoteOff(1, 0, 0));
    EXPECT_EQ(sent.back(), midi::ProgramChange(1, 44));
    EXPECT_EQ(rig.Get(PARAM_PROGRAM), 300);
    rig.sink.Clear();
    rig.node->Start(0);
    ASSERT_GE(sent.size(), 5u);
    EXPECT_EQ(sent[sent.size() - 5], midi::ProgramChange(1, 44));
    EXPECT_EQ(sent.back(), midi::ControlChange(1, 38, 0));
    EXPECT_EQ(rig.node->MidiClock(), 0.0);
}

TEST(Connection, ThePreferredFormatIsMonoInBuffersOf1024Bytes) {
    media::MediaFormat format;
    format.type = media::MediaType::RawAudio;
    format.raw.frameRate = 48000;
    VocatoNode::getPreferredFormat(format);
    EXPECT_EQ(format.raw.channelCount, 1u);
    EXPECT_EQ(format.raw.bufferSize, 1024u);
    EXPECT_EQ(format.raw.frameRate, 0.0);
    media::MediaFormat other;
    EXPECT_THROW(VocatoNode::getPreferredFormat(other), std::invalid_argument);
}

TEST(AddOn, MakesWindowlessNodesThatNameTheirAddOn) {
    std::unique_ptr<VocatoAddOn> addOn(make_media_addon(3));
    const char* failure = nullptr;
    EXPECT_EQ(addOn->InitCheck(&failure), media::kOk);
    const FlavorInfo* flavor = nullptr;
    EXPECT_EQ(addOn->GetFlavorAt(1, &flavor), media::kError);
    EXPECT_EQ(flavor, nullptr);
    ASSERT_EQ(addOn->GetFlavorAt(0, &flavor), media::kOk);
    EXPECT_EQ(flavor->kinds, kBufferConsumer | kControllable);

    NodeOptions options;
    options.internalSynth = false;
    auto node = addOn->InstantiateNodeFor(flavor, options);
    int32_t internalId = 42;
    EXPECT_EQ(node->AddOn(&internalId), addOn.get());
    EXPECT_EQ(internalId, 0);
    EXPECT_EQ(node->Window(), nullptr);
    EXPECT_EQ(node->Channel(), 1);

    NodeRig windowNode;
    internalId = 42;
    EXPECT_EQ(windowNode.node->AddOn(&internalId), nullptr);
    EXPECT_EQ(internalId, 42);
}
