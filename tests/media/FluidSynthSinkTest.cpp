#include "Fixtures.h"

#include "FluidSynthSink.h"
#include "SoundFontProbe.h"

#include <gtest/gtest.h>

#include <fstream>

namespace midi = vocato::media::midi;
using vocato::media::FindSoundFont;
using vocato::test::TempDir;

TEST(FluidSynthSink, ANoteSentSoundsAtItsPitchAndBendMovesIt) {
    const auto font = FindSoundFont(vocato::media::SoundFontProbeList());
    ASSERT_TRUE(font) << "install fluid-soundfont-gm";
    auto synth = vocato::media::FluidSynthSink::Create(44100);
    ASSERT_NE(synth, nullptr);
    ASSERT_TRUE(synth->LoadSoundFont(*font));
    std::vector<float> left(8192), right(8192);
    // Cents from A4 of what sounds once the attack or the bend has settled.
    auto centsFromA4 = [&] {
        synth->Render(left.data(), right.data(), 4096);
        synth->Render(left.data(), right.data(), 8192);
        return vocato::test::Cents(vocato::test::EstimatePitchHz(left.data(), 8192, 44100), 440.0);
    };
    synth->Send(midi::ProgramChange(1, 73), 0); // flute: nearly a sine
    synth->Send(midi::NoteOn(1, 69, 100), 0);
    EXPECT_NEAR(centsFromA4(), 0.0, 10.0);
    // Bend 12288 is half-way up a range of 2 semitones: one semitone.
    synth->Send(midi::PitchBend(1, 12288 & 0x7F, 12288 >> 7), 0);
    EXPECT_NEAR(centsFromA4(), 100.0, 10.0);
}

TEST(SoundFontProbe, TakesTheFirstEntryThatExistsEvenAsADanglingLink) {
    TempDir dir;
    const std::string link = dir.File("link.sf2");
    ASSERT_EQ(::symlink("/nonexistent/target.sf2", link.c_str()), 0);
    std::ofstream(dir.File("real.sf2")) << "x";
    EXPECT_EQ(FindSoundFont({dir.File("none.sf2"), link, dir.File("real.sf2")}), link);
    EXPECT_EQ(FindSoundFont({dir.File("none.sf2")}), std::nullopt);
}
