// `vocato convert` run as a user runs it: the real executable on files written here.
#include "Fixtures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sndfile.h>
#include <sys/wait.h>

using vocato::test::Note;
using vocato::test::ReadMidiWithMido;
using vocato::test::TempDir;
using vocato::test::WriteSoundFile;

namespace {

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

Outcome Vocato(const std::string& arguments, const TempDir& dir) {
    const std::string out = dir.File("stdout.txt");
    const std::string err = dir.File("stderr.txt");
    const std::string command =
        std::string(VOCATO_EXE) + " " + arguments + " >" + out + " 2>" + err;
    const int raw = std::system(command.c_str());
    auto slurp = [](const std::string& path) {
        std::ifstream in(path);
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    Outcome run{WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, slurp(out), slurp(err)};
    std::filesystem::remove(out);
    std::filesystem::remove(err);
    return run;
}

std::string Tone(const TempDir& dir, const std::string& name, int rate, int channels, int format,
                 double seconds = 1.0) {
    const std::vector<float> mono = vocato::test::Sine(440.0, rate, seconds, 0.5);
    std::vector<float> interleaved(mono.size() * static_cast<size_t>(channels));
    for (size_t i = 0; i < mono.size(); ++i) {
        for (int c = 0; c < channels; ++c) {
            // Only the first channel carries the tone; the others carry a different pitch.
            interleaved[i * static_cast<size_t>(channels) + static_cast<size_t>(c)] =
                c == 0 ? mono[i] : 0.3f * std::sin(2.0f * 3.14159265f * 1234.0f * i / rate);
        }
    }
    const std::string path = dir.File(name);
    WriteSoundFile(path, interleaved, rate, channels, format);
    return path;
}

// Note-on keys, in file order, from mido's lines ("ticks hexbytes").
std::vector<int> NoteOnKeys(const std::vector<std::string>& lines) {
    std::vector<int> keys;
    for (const std::string& line : lines) {
        const auto space = line.find(' ');
        const std::string bytes = line.substr(space + 1);
        if (bytes.size() == 6 && bytes[0] == '9' && bytes.substr(4) != "00") {
            keys.push_back(std::stoi(bytes.substr(2, 2), nullptr, 16));
        }
    }
    return keys;
}

int Count(const std::vector<std::string>& lines, char status) {
    int n = 0;
    for (const std::string& line : lines) {
        const std::string bytes = line.substr(line.find(' ') + 1);
        n += bytes.size() == 6 && bytes[0] == status;
    }
    return n;
}

} // namespace

TEST(ConvertCommand, AMelodyBecomesAMidiFileThatOpensWithProgramAndBendRange) {
    TempDir dir;
    const std::vector<Note> melody = {{72, 0.3, 0.6}, {76, 0.75, 1.05}, {79, 1.2, 1.5}};
    const std::string in = dir.File("melody.wav");
    WriteSoundFile(in, vocato::test::RenderMelody(melody, 68, 44100), 44100, 1,
                   SF_FORMAT_WAV | SF_FORMAT_PCM_16);
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
    const std::vector<int> keys = NoteOnKeys(lines);
    auto at = keys.begin();
    for (const Note& n : melody) {
        at = std::find(at, keys.end(), n.key);
        EXPECT_NE(at, keys.end()) << "note " << n.key << " missing";
    }
    EXPECT_EQ(Count(lines, '8'), Count(lines, '9')) << "every note is ended";
}

TEST(ConvertCommand, PrintsWhatItDidAndTheLastNoteIsClosedAtTheEnd) {
    TempDir dir;
    const std::string in = Tone(dir, "tone.wav", 44100, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 2.0);
    const std::string out = dir.File("tone.mid");
    const Outcome run = Vocato("convert " + in + " -o " + out, dir);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("tone.wav: 1 note in 2.0 s of audio"), std::string::npos) << run.out;
    const auto lines = ReadMidiWithMido(out);
    ASSERT_GE(lines.size(), 2u);
    const std::string& last = lines[lines.size() - 2];
    EXPECT_EQ(last.substr(last.find(' ') + 1), "804500") << last;
    EXPECT_NEAR(std::stod(last), 2000.0, 1.0);
}

struct FormatCase {
    const char* name;
    int rate;
    int channels;
    int format;
};

class ConvertFormats : public testing::TestWithParam<FormatCase> {};

TEST_P(ConvertFormats, TheToneInTheFirstChannelIsHeardAsA4) {
    TempDir dir;
    const FormatCase& c = GetParam();
    const std::string in = Tone(dir, std::string(c.name) + ".snd", c.rate, c.channels, c.format);
    const std::string out = dir.File("out.mid");
    const Outcome run = Vocato("convert " + in + " -o " + out + " --quiet", dir);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(NoteOnKeys(ReadMidiWithMido(out)), std::vector<int>{69});
}

INSTANTIATE_TEST_SUITE_P(
    Files, ConvertFormats,
    testing::Values(FormatCase{"pcm8", 44100, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_U8},
                    FormatCase{"pcm24", 44100, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_24},
                    FormatCase{"float", 44100, 1, SF_FORMAT_WAV | SF_FORMAT_FLOAT},
                    FormatCase{"stereo", 44100, 2, SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
                    FormatCase{"six_channels", 48000, 6, SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
                    FormatCase{"rate8k", 8000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16},
                    FormatCase{"rate192k", 192000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16},
                    FormatCase{"ogg", 44100, 1, SF_FORMAT_OGG | SF_FORMAT_VORBIS}),
    [](const testing::TestParamInfo<FormatCase>& info) { return info.param.name; });

TEST(ConvertCommand, BadInputGetsOneMessageAFailureStatusAndNoOutputFile) {
    TempDir dir;
    const std::string empty = dir.File("empty.wav");
    std::ofstream(empty).close();
    const std::string text = dir.File("words.wav");
    std::ofstream(text) << "no audio in here, only words that go on for a while\n";
    const std::string cut = dir.File("cut.wav");
    Tone(dir, "whole.wav", 44100, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::filesystem::copy_file(dir.File("whole.wav"), cut);
    std::filesystem::resize_file(cut, 30);
    const std::string slow = Tone(dir, "slow.wav", 2000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::filesystem::create_directory(dir.File("folder.wav"));

    for (const std::string& in :
         {dir.File("missing.wav"), empty, text, cut, slow, dir.File("folder.wav")}) {
        const std::string out = dir.File("out.mid");
        const Outcome run = Vocato("convert " + in + " -o " + out, dir);
        EXPECT_EQ(run.status, 1) << in;
        EXPECT_EQ(run.err.rfind("vocato convert: ", 0), 0u) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_NE(run.err.find(in), std::string::npos) << run.err;
        EXPECT_FALSE(std::filesystem::exists(out)) << in;
    }
}

TEST(ConvertCommand, AnUnwritableOutputFailsAndAnEarlierFileSurvivesAFailedRun) {
    TempDir dir;
    const std::string in = Tone(dir, "tone.wav", 44100, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    const Outcome nowhere = Vocato("convert " + in + " -o " + dir.File("no/such/dir/x.mid"), dir);
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_NE(nowhere.err.find("no/such/dir/x.mid"), std::string::npos) << nowhere.err;

    const std::string out = dir.File("keep.mid");
    std::ofstream(out) << "earlier";
    const Outcome bad = Vocato("convert " + dir.File("missing.wav") + " -o " + out, dir);
    EXPECT_EQ(bad.status, 1);
    std::ifstream kept(out);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), "earlier");
}

TEST(ConvertCommand, HelpListsTheOptionsAndBadOptionsAreRefused) {
    TempDir dir;
    const Outcome help = Vocato("convert --help", dir);
    EXPECT_EQ(help.status, 0);
    for (const char* option : {"--output", "--preset", "--program", "--transpose", "--bend-range",
                               "--channel", "--median", "--confirm", "--quiet"}) {
        EXPECT_NE(help.out.find(option), std::string::npos) << option;
    }
    EXPECT_NE(Vocato("convert x.wav -o y.mid --preset 21", dir).status, 0);
    EXPECT_NE(Vocato("convert x.wav", dir).status, 0);
}
