#include "Fixtures.h"

#include "FluidSynthSink.h"
#include "SoundFontProbe.h"

#include <gtest/gtest.h>

#include <fstream>

namespace midi = vocato::media::midi;
using vocato::media::FindSoundFont;
using vocato::media::FluidSynthSink;
using vocato::test::TempDir;

TEST(FluidSynthSink, ANoteSentSoundsAtItsPitchAndBendMovesIt) {
    const auto font = FindSoundFont(vocato::media::SoundFontProbeList());
    ASSERT_TRUE(font) << "install fluid-soundfont-gm";
    auto synth = FluidSynthSink::Create(44100);
    ASSERT_NE(synth, nullptr);
    ASSERT_TRUE(synth->LoadSoundFont(*font));
    synth->Send(midi::ProgramChange(1, 73), 0); // flute: nearly a sine
    synth->Send(midi::NoteOn(1, 69, 100), 0);
    std::vector<float> left(8192), right(8192);
    synth->Render(left.data(), right.data(), 4096); // let the attack pass
    synth->Render(left.data(), right.data(), 8192);
    EXPECT_NEAR(vocato::test::Cents(vocato::test::EstimatePitchHz(left.data(), 8192, 44100), 440.0),
                0.0, 10.0);

    // Bend 12288 is half-way up a range of 2 semitones: one semitone.
    synth->Send(midi::PitchBend(1, 12288 & 0x7F, 12288 >> 7), 0);
    synth->Render(left.data(), right.data(), 2048);
    synth->Render(left.data(), right.data(), 8192);
    EXPECT_NEAR(vocato::test::Cents(vocato::test::EstimatePitchHz(left.data(), 8192, 44100), 440.0),
                100.0, 10.0);
}

TEST(FluidSynthSink, AFileThatIsNotASoundFontLeavesTheSynthesizerSilent) {
    TempDir dir;
    const std::string bogus = dir.File("bogus.sf2");
    std::ofstream(bogus) << "RIFF but not really";
    auto synth = FluidSynthSink::Create(44100);
    ASSERT_NE(synth, nullptr);
    EXPECT_FALSE(synth->LoadSoundFont(bogus));
    synth->Send(midi::NoteOn(1, 60, 127), 0);
    std::vector<float> left(1024), right(1024);
    synth->Render(left.data(), right.data(), 1024);
    for (float v : left) {
        ASSERT_EQ(v, 0.0f);
    }
}

TEST(SoundFontProbe, TakesTheFirstEntryThatExistsEvenAsADanglingLink) {
    TempDir dir;
    const std::string link = dir.File("link.sf2");
    ASSERT_EQ(::symlink("/nonexistent/target.sf2", link.c_str()), 0);
    const std::string real = dir.File("real.sf2");
    std::ofstream(real) << "x";
    EXPECT_EQ(FindSoundFont({dir.File("none.sf2"), link, real}), link);
    EXPECT_EQ(FindSoundFont({dir.File("none.sf2")}), std::nullopt);
}
