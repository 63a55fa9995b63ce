// `vocato convert` run as a user runs it: the real executable on files written here.
#include "Fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sndfile.h>

using namespace vocato::test;

namespace {

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

Outcome Vocato(const std::string& arguments, const TempDir& dir,
              const std::string& exe = VOCATO_EXE) {
    const std::string err = dir.File("stderr.txt");
    const auto run = RunCommand(exe + " " + arguments + " 2>" + err);
    return {run.status, run.out, ReadFile(err)};
}

// A4 in the first channel; every other channel carries a different pitch.
std::string Tone(const TempDir& dir, const std::string& name, int rate, int channels, int format) {
    const std::vector<float> a4 = Sine(440.0, rate, 1.0, 0.5);
    const std::vector<float> other = Sine(1234.0, rate, 1.0, 0.3);
    std::vector<float> interleaved;
    for (size_t i = 0; i < a4.size(); ++i) {
        interleaved.push_back(a4[i]);
        interleaved.insert(interleaved.end(), static_cast<size_t>(channels - 1), other[i]);
    }
    WriteSoundFile(dir.File(name), interleaved, rate, channels, format);
    return dir.File(name);
}

} // namespace

TEST(ConvertCommand, AMelodyBecomesAMidiFileThatOpensWithProgramAndBendRange) {
    TempDir dir;
    const std::vector<Note> melody = {{72, 0.3, 0.6}, {76, 0.75, 1.05}, {79, 1.2, 1.5}};
    const std::string in = dir.File("melody.wav");
    WriteSoundFile(in, RenderMelody(melody, 68, 44100));
    const std::string out = dir.File("melody.mid");
    const Outcome run = Vocato("convert " + in + " -o " + out +
                                   " --preset 19 --program 68 --channel 2 --bend-range 12 --quiet",
                               dir);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "");
    const auto lines = ReadMidiWithMido(out);
    ASSERT_GE(lines.size(), 9u);
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 8),
              (std::vector<std::string>{"0 500", "0 meta set_tempo 500000", "0 c144", "0 b16500",
                                        "0 b16400", "0 b1060c", "0 b12600", "0 b10b7f"}));
    const std::vector<int> keys = KeysOf(lines, '9');
    auto at = keys.begin();
    for (const Note& n : melody) {
        at = std::find(at, keys.end(), n.key);
        EXPECT_NE(at, keys.end()) << "note " << n.key << " missing";
    }
    EXPECT_EQ(KeysOf(lines, '8').size(), keys.size()) << "every note is ended";
}

TEST(ConvertCommand, TheToneInTheFirstChannelAtAnyRateOrLayoutIsOneA4ClosedAtTheEnd) {
    struct Case {
        const char* name;
        int rate, channels, format;
    };
    // Sample formats are the reader's own tests; here: channels, rates and a compressed file.
    for (const Case& c : {Case{"stereo", 44100, 2, SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
                          Case{"six_channels", 48000, 6, SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
                          Case{"rate8k", 8000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16},
                          Case{"rate192k", 192000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16},
                          Case{"ogg", 44100, 1, SF_FORMAT_OGG | SF_FORMAT_VORBIS}}) {
        TempDir dir;
        const std::string in = Tone(dir, std::string(c.name) + ".snd", c.rate, c.channels, c.format);
        const Outcome run = Vocato("convert " + in + " -o " + dir.File("out.mid"), dir);
        ASSERT_EQ(run.status, 0) << c.name << ": " << run.err;
        EXPECT_NE(run.out.find(std::string(c.name) + ".snd: 1 note in 1.0 s of audio"),
                  std::string::npos) << run.out;
        const auto lines = ReadMidiWithMido(dir.File("out.mid"));
        EXPECT_EQ(KeysOf(lines, '9'), std::vector<int>{69}) << c.name;
        ASSERT_GE(lines.size(), 2u);
        EXPECT_EQ(lines[lines.size() - 2], "1000 804500") << c.name;
    }
}

TEST(ConvertCommand, TheTrackerOptionChoosesWhichTrackerDecides) {
    TempDir dir;
    const std::string in = dir.File("melody.wav");
    WriteSoundFile(in, RenderMelody({{60, 0.3, 0.5}, {60, 0.52, 0.8}, {67, 0.9, 1.3}}, 71, 44100));
    auto convert = [&](const std::string& tracker) {
        const std::string out = dir.File(tracker + ".mid");
        const std::string option = tracker.empty() ? "" : " --tracker " + tracker;
        EXPECT_EQ(Vocato("convert " + in + " -o " + out + option + " --quiet", dir).status, 0);
        return ReadFile(out);
    };
    const std::string classic = convert("classic");
    ASSERT_FALSE(classic.empty());
    EXPECT_NE(classic, convert("Precise")) << "both names lead to the same tracker";
    EXPECT_EQ(convert(""), convert("precise")) << "precise is the default";
}

TEST(ConvertCommand, BadInputOutputOrOptionsGetAFailureStatusAndLeaveNoFileBehind) {
    TempDir dir;
    const std::string empty = dir.File("empty.wav");
    std::ofstream(empty).close();
    const std::string text = dir.File("words.wav");
    std::ofstream(text) << "no audio in here, only words that go on for a while\n";
    const std::string tone = WriteTone(dir, "whole.wav", 1.0);
    const std::string cut = dir.File("cut.wav");
    std::filesystem::copy_file(tone, cut);
    std::filesystem::resize_file(cut, 30);
    const std::string slow = Tone(dir, "slow.wav", 2000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::filesystem::create_directory(dir.File("folder.wav"));
    const std::string out = dir.File("out.mid");
    const std::string kept = dir.File("keep.mid");
    std::ofstream(kept) << "earlier";

    auto refused = [&](const std::string& in, const std::string& to, const std::string& named) {
        const Outcome run = Vocato("convert " + in + " -o " + to, dir);
        EXPECT_EQ(run.status, 1) << in;
        EXPECT_EQ(run.err.rfind("vocato convert: ", 0), 0u) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_NE(run.err.find(named), std::string::npos) << run.err;
        EXPECT_FALSE(std::filesystem::exists(out)) << in;
    };
    for (const std::string& in :
         {dir.File("missing.wav"), empty, text, cut, slow, dir.File("folder.wav")}) {
        refused(in, out, in);
    }
    refused(tone, dir.File("no/such/dir/x.mid"), dir.File("no/such/dir/x.mid"));
    refused(dir.File("missing.wav"), kept, dir.File("missing.wav"));
    EXPECT_EQ(ReadFile(kept), "earlier");
    EXPECT_NE(Vocato("convert " + tone + " -o " + out + " --preset 21", dir).status, 0);
    EXPECT_NE(Vocato("convert " + tone, dir).status, 0) << "no output named";
    EXPECT_NE(Vocato("convert " + tone + " -o " + out + " --tracker fast", dir).status, 0);
    EXPECT_FALSE(std::filesystem::exists(out));
}

// The executable converts on its own; the window and `vocato live` come from the module beside
// it, and without that module they fail with a reason instead of a loader's crash.
TEST(ConvertCommand, ConvertsWithoutTheModuleThatTheWindowAndLiveRolesNeed) {
    TempDir dir;
    const std::string lone = dir.File("vocato");
    std::filesystem::copy_file(VOCATO_EXE, lone);
    const std::string in = Tone(dir, "a4.wav", 44100, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    const Outcome convert = Vocato("convert " + in + " -o " + dir.File("a4.mid") + " -q", dir, lone);
    ASSERT_EQ(convert.status, 0) << convert.err;
    EXPECT_EQ(KeysOf(ReadMidiWithMido(dir.File("a4.mid")), '9'), std::vector<int>{69});

    for (const std::string role : {"live --no-synth", ""}) {
        const Outcome run = Vocato(role, dir, lone);
        EXPECT_EQ(run.status, 1) << role;
        EXPECT_NE(run.err.find("cannot load the window and live roles"), std::string::npos)
            << role << ": " << run.err;
    }
}
