#include "NodeRig.h"

#include "Fixtures.h"
#include "MidiRecording.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <tuple>

namespace midi = vocato::media::midi;
using vocato::media::MidiMessage;
using vocato::test::NodeRig;

TEST(MidiSend, BendIsTwo7BitBytesBendRangeIsParameterZeroAndTheDisplayFollowsBothAndNotes) {
    NodeRig rig;
    for (const auto& [bend, lsb, msb] : {std::tuple{8192, 0, 64}, {16383, 127, 127}, {0, 0, 0}}) {
        rig.sink.Clear();
        rig.node->SendBend(1, static_cast<unsigned short>(bend), 0.0);
        EXPECT_EQ(rig.sink.sent.at(0),
                  midi::PitchBend(1, static_cast<uint8_t>(lsb), static_cast<uint8_t>(msb)));
        EXPECT_EQ(rig.window.displayBend.load(), static_cast<float>(bend));
    }
    rig.sink.Clear();
    rig.node->SendBendRange(1, 200, 0.0);
    EXPECT_EQ(rig.sink.sent.at(2), midi::ControlChange(1, 6, 72));
    EXPECT_EQ(rig.window.bendRange.load(), 200.0f);

    rig.node->SendNoteOn(1, 60, 100, 0.0);
    EXPECT_EQ(rig.window.displayNote.load(), 60.0f);
    rig.node->SendNoteOff(1, 72, 0, 0.0); // clears the display whatever note it ends
    EXPECT_EQ(rig.window.displayNote.load(), 0.0f);
    EXPECT_EQ(rig.window.displayVelocity.load(), 0.0f);
}

TEST(MidiSend, TheRecordingOpensWithTheNodesSettingsThenStampsTimeSinceTheMidiClockBase) {
    NodeRig rig({.channel = 3});
    rig.Set(vocato::PARAM_PROGRAM, 300);
    rig.Set(vocato::PARAM_BEND_RANGE, 12.9f);
    rig.ConnectAndStart();
    rig.clock.Set(7'000'000); // the MIDI clock reads 1000 ms when the recording starts
    rig.Feed({});
    ASSERT_EQ(rig.node->MidiClock(), 1000.0);
    ASSERT_TRUE(vocato::ConnectMidiStore(*rig.node, rig.window, 64));
    rig.node->SetMidiStoreBaseTime(1); // the base is the MIDI clock, not the argument
    EXPECT_EQ(rig.node->RecordingStampNow(), 0u);
    rig.sink.Clear();
    rig.node->SendExpression(3, 90, 3500.7);
    rig.node->SendNoteOn(3, 60, 99, 1200.0);
    rig.node->SendBend(3, 9000, 1300.0);
    rig.node->SendNoteOff(3, 60, 0, 1400.0);
    EXPECT_EQ(rig.sink.stamps.at(0), 3500u) << "the synthesizer gets the caller's stamp";
    const auto* store = rig.window.recording.Kept();
    std::vector<MidiMessage> messages;
    std::vector<uint32_t> stamps;
    for (size_t i = 0; i < store->CountEvents(); ++i) {
        messages.push_back(store->EventAt(i).message);
        stamps.push_back(store->EventAt(i).stampMs);
    }
    EXPECT_EQ(messages, (std::vector<MidiMessage>{
                            midi::ProgramChange(3, 44), midi::ControlChange(3, 101, 0),
                            midi::ControlChange(3, 100, 0), midi::ControlChange(3, 6, 12),
                            midi::ControlChange(3, 38, 0), midi::ControlChange(3, 11, 127),
                            midi::ControlChange(3, 11, 90), midi::NoteOn(3, 60, 99),
                            midi::PitchBend(3, 9000 & 0x7F, 9000 >> 7), midi::NoteOff(3, 60, 0)}));
    EXPECT_EQ(stamps, (std::vector<uint32_t>{0, 0, 0, 0, 0, 0, 2500, 200, 300, 400}));

    rig.window.recording.SetRecording(false);
    rig.node->SendNoteOn(3, 62, 99, 1500.0);
    EXPECT_EQ(store->CountEvents(), vocato::kOpeningEvents + 4);
}

TEST(CheckSynthFile, OnlyASoundFontThatFailsToLoadIsReportedAndItLeavesASilentSynthesizer) {
    vocato::test::KeptAlerts alert;
    vocato::test::TempDir dir;
    const std::string bogus = dir.File("bogus.sf2");
    std::ofstream(bogus) << "not a SoundFont";
    vocato::NodeOptions off;
    off.alert = &alert;
    off.internalSynth = false;
    off.soundFonts = {bogus};
    EXPECT_EQ(vocato::VocatoNode(nullptr, nullptr, "", 1, off).Synth(), nullptr);
    vocato::NodeOptions none;
    none.alert = &alert;
    none.soundFonts = {dir.File("missing.sf2")};
    EXPECT_EQ(vocato::VocatoNode(nullptr, nullptr, "", 1, none).Synth(), nullptr);
    EXPECT_TRUE(alert.shown.empty());

    none.soundFonts.push_back(bogus);
    vocato::VocatoNode node(nullptr, nullptr, "", 1, none);
    EXPECT_EQ(alert.shown,
              (std::vector<std::string>{"Synthfile Error: No synthfile for synthesizer"}));
    ASSERT_NE(node.Synth(), nullptr);
    EXPECT_FALSE(node.Synth()->Enabled());
    node.Synth()->Send(midi::NoteOn(1, 60, 127), 0);
    std::vector<float> left(1024), right(1024);
    node.Synth()->Render(left.data(), right.data(), 1024);
    EXPECT_EQ(std::count(left.begin(), left.end(), 0.0f), 1024);
}
