// The plugin and `vocato convert` share the node's code path: on the same audio with the same
// settings they send the same MIDI at the same times. The converter's file is read back with
// an independent reader (mido).
#include "Melody.h"
#include "TestHost.h"

#include "MidiRecording.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>
#include <unistd.h>

namespace vocato::lv2::test {
namespace {

namespace fs = std::filesystem;

struct TimedBytes {
    double ms = 0.0;
    std::vector<int> bytes;
    bool operator==(const TimedBytes&) const = default;
};

std::ostream& operator<<(std::ostream& os, const TimedBytes& e) {
    os << e.ms << " ms:";
    for (int b : e.bytes) {
        os << ' ' << b;
    }
    return os;
}

struct Settings {
    std::string name;
    std::string convertArguments;
    std::vector<std::pair<PortIndex, float>> ports;
};

std::ostream& operator<<(std::ostream& os, const Settings& s) {
    return os << s.name;
}

class TempDir {
public:
    TempDir() : path_(fs::temp_directory_path() / ("vocato-lv2-" + std::to_string(getpid()))) {
        fs::create_directories(path_);
    }
    ~TempDir() { fs::remove_all(path_); }
    fs::path operator/(const std::string& name) const { return path_ / name; }

private:
    fs::path path_;
};

void WriteWav(const fs::path& path, const std::vector<int16_t>& samples, int rate) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    ASSERT_EQ(sf_write_short(file, samples.data(), static_cast<sf_count_t>(samples.size())),
              static_cast<sf_count_t>(samples.size()));
    sf_close(file);
}

std::vector<TimedBytes> ConvertedEvents(const fs::path& wav, const fs::path& mid,
                                        const std::string& arguments) {
    const std::string convert = std::string(VOCATO_BINARY) + " convert -q '" + wav.string() +
                                "' -o '" + mid.string() + "' " + arguments;
    EXPECT_EQ(std::system(convert.c_str()), 0) << convert;
    const std::string read =
        "/usr/bin/python3 '" + std::string(SMF_EVENTS_SCRIPT) + "' '" + mid.string() + "'";
    FILE* pipe = popen(read.c_str(), "r");
    std::vector<TimedBytes> events;
    char line[256];
    while (pipe != nullptr && std::fgets(line, sizeof line, pipe) != nullptr) {
        std::istringstream in(line);
        TimedBytes e;
        in >> e.ms;
        for (int b; in >> b;) {
            e.bytes.push_back(b);
        }
        events.push_back(e);
    }
    EXPECT_EQ(pipe != nullptr ? pclose(pipe) : -1, 0) << read;
    return events;
}

// The plugin's events from audio, on the converter's millisecond clock: the decisions on
// the k-th 16-sample frame sit at its last sample and carry the clock of frame k, which
// advances by 16 samples' worth of milliseconds a frame, summed as the node sums it.
std::vector<TimedBytes> OnConverterClock(const std::vector<MidiEvent>& events, double rate) {
    std::vector<TimedBytes> out;
    const double step = 16000.0 / rate;
    int64_t frame = 0;
    double clock = 0.0;
    for (const MidiEvent& e : events) {
        if (e.frame == 0) {
            continue; // activation and parameter changes, before any audio
        }
        EXPECT_EQ(e.frame % 16, 15) << "an event between two frame ends";
        for (; frame < e.frame / 16; ++frame) {
            clock += step;
        }
        out.push_back({std::trunc(clock), {e.bytes.begin(), e.bytes.end()}});
    }
    return out;
}

class PluginAgainstConvert : public ::testing::TestWithParam<Settings> {};

TEST_P(PluginAgainstConvert, SendsTheSameEventsAtTheSameTimes) {
    constexpr int kRate = 44100;
    const std::vector<int16_t> melody = RenderMelody(TestMelody(), kRate);
    TempDir dir;
    WriteWav(dir / "melody.wav", melody, kRate);
    std::vector<TimedBytes> converted =
        ConvertedEvents(dir / "melody.wav", dir / "melody.mid", GetParam().convertArguments);
    // The recording opens with the program, the bend range and full expression at time 0.
    ASSERT_GT(converted.size(), kOpeningEvents);
    converted.erase(converted.begin(), converted.begin() + kOpeningEvents);

    size_t noteOns = 0;
    for (const TimedBytes& e : converted) {
        noteOns += (e.bytes[0] & 0xF0) == 0x90 && e.bytes[2] != 0;
    }
    ASSERT_EQ(noteOns, TestMelody().size()) << "the melody is not what the test assumes";

    // Block sizes a host may use: a power of two, and sizes that cut frames apart.
    for (const std::vector<uint32_t>& blocks :
         {std::vector<uint32_t>{256}, std::vector<uint32_t>{1, 100, 333, 7, 1024}}) {
        SCOPED_TRACE(::testing::PrintToString(blocks));
        TestHost host;
        ASSERT_TRUE(host.Instantiate(kRate));
        for (const auto& [port, value] : GetParam().ports) {
            host.SetControl(port, value);
        }
        host.Activate();
        host.Run(ToFloat(melody), blocks);
        EXPECT_EQ(OnConverterClock(host.Events(), kRate), converted);
    }
}

INSTANTIATE_TEST_SUITE_P(
    SameSettings, PluginAgainstConvert,
    ::testing::Values(Settings{"Defaults", "", {}},
                      Settings{"FemaleVoiceTransposedWithProgramAndBend",
                               "--preset 3 --transpose 2 --program 5 --bend-range 7",
                               {{kPreset, 3}, {kTranspose, 2}, {kProgram, 5}, {kBendRange, 7}}},
                      Settings{
                          "MedianAndConfirm", "--median --confirm", {{kMedian, 1}, {kConfirm, 1}}}),
    [](const auto& info) { return info.param.name; });

} // namespace
} // namespace vocato::lv2::test
