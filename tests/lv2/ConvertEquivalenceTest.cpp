// The plugin and `vocato convert` share the node's code path: on the same audio with the same
// settings they send the same MIDI at the same times. The converter's file is read back with
// an independent reader (mido).
#include "TestHost.h"

#include "Fixtures.h"
#include "MidiRecording.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>

namespace vocato::lv2::test {
namespace {

using vocato::test::Note;

struct TimedBytes {
    double ms = 0.0;
    std::string hex;
    bool operator==(const TimedBytes&) const = default;
};

std::ostream& operator<<(std::ostream& os, const TimedBytes& e) {
    return os << e.ms << " ms " << e.hex;
}

struct Settings {
    std::string name;
    std::string convertArguments;
    std::vector<std::pair<PortIndex, float>> ports;
};

std::ostream& operator<<(std::ostream& os, const Settings& s) {
    return os << s.name;
}

constexpr int kRate = 44100;

// A flute melody inside the default note range, rendered by FluidSynth.
const std::vector<Note>& Melody() {
    static const std::vector<Note> notes = {{62, 0.2, 0.5},  {65, 0.6, 0.9},  {69, 1.0, 1.4},
                                            {67, 1.5, 1.75}, {64, 1.85, 2.1}, {60, 2.2, 2.7}};
    return notes;
}

// What the converter reads from the file, as a host's floats (k / 32768 for sample k).
std::vector<float> ReadAsHostFloats(const std::string& path) {
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr) {
        ADD_FAILURE() << sf_strerror(nullptr);
        return {};
    }
    std::vector<int16_t> samples(static_cast<size_t>(info.frames));
    sf_read_short(file, samples.data(), info.frames);
    sf_close(file);
    std::vector<float> out(samples.size());
    for (size_t i = 0; i < samples.size(); ++i) {
        out[i] = static_cast<float>(samples[i]) / 32768.0f;
    }
    return out;
}

std::vector<TimedBytes> ConvertedEvents(const std::string& wav, const std::string& mid,
                                        const std::string& arguments) {
    const std::string convert =
        std::string(VOCATO_BINARY) + " convert -q '" + wav + "' -o '" + mid + "' " + arguments;
    EXPECT_EQ(std::system(convert.c_str()), 0) << convert;
    const std::vector<std::string> lines = vocato::test::ReadMidiWithMido(mid);
    std::vector<TimedBytes> events;
    if (lines.empty()) {
        return events;
    }
    std::istringstream header(lines[0]);
    int format = 0;
    double division = 0;
    header >> format >> division;
    double tempo = 500000.0;
    for (size_t i = 1; i < lines.size(); ++i) {
        std::istringstream in(lines[i]);
        double ticks = 0;
        std::string what;
        in >> ticks >> what;
        if (what == "meta") {
            std::string type;
            in >> type;
            if (type == "set_tempo") {
                in >> tempo;
            }
            continue;
        }
        events.push_back({ticks * tempo / (division * 1000.0), what});
    }
    return events;
}

std::string Hex(const std::vector<uint8_t>& bytes) {
    static const char* digits = "0123456789abcdef";
    std::string out;
    for (uint8_t b : bytes) {
        out += digits[b >> 4];
        out += digits[b & 15];
    }
    return out;
}

// The plugin's events from audio, on the converter's millisecond clock: the decisions on
// the k-th 16-sample frame sit at its last sample and carry the clock of frame k, which
// advances by 16 samples' worth of milliseconds a frame, summed as the node sums it.
std::vector<TimedBytes> OnConverterClock(const std::vector<MidiEvent>& events) {
    std::vector<TimedBytes> out;
    const double step = 16000.0 / kRate;
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
        out.push_back({std::trunc(clock), Hex(e.bytes)});
    }
    return out;
}

class PluginAgainstConvert : public ::testing::TestWithParam<Settings> {};

TEST_P(PluginAgainstConvert, SendsTheSameEventsAtTheSameTimes) {
    vocato::test::TempDir dir;
    const std::string wav = dir.File("melody.wav");
    vocato::test::WriteSoundFile(wav, vocato::test::RenderMelody(Melody(), 73, kRate), kRate, 1,
                                 SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    const std::vector<float> audio = ReadAsHostFloats(wav);
    std::vector<TimedBytes> converted =
        ConvertedEvents(wav, dir.File("melody.mid"), GetParam().convertArguments);
    // The recording opens with the program, the bend range and full expression at time 0.
    ASSERT_GT(converted.size(), kOpeningEvents);
    converted.erase(converted.begin(), converted.begin() + kOpeningEvents);
    size_t noteOns = 0;
    for (const TimedBytes& e : converted) {
        noteOns += e.hex[0] == '9' && e.hex.substr(4) != "00";
    }
    ASSERT_GE(noteOns, Melody().size()) << "the melody is not what the test assumes";

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
        host.Run(audio, blocks);
        EXPECT_EQ(OnConverterClock(host.Events()), converted);
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
