// The plugin and `vocato convert` share the node's code path: on the same audio with the same
// settings they send the same MIDI at the same times. The converter's file is read back with
// an independent reader (mido).
#include "TestHost.h"

#include "Fixtures.h"
#include "MidiRecording.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace vocato::lv2::test {
namespace {

constexpr int kRate = 44100;

// Milliseconds and the event's bytes in hex, as the converter's file holds them.
using TimedBytes = std::pair<double, std::string>;

std::vector<TimedBytes> ConvertedEvents(const std::string& wav, const std::string& mid,
                                        const std::string& arguments) {
    const std::string convert =
        std::string(VOCATO_BINARY) + " convert -q '" + wav + "' -o '" + mid + "' " + arguments;
    EXPECT_EQ(std::system(convert.c_str()), 0) << convert;
    const std::vector<std::string> lines = vocato::test::ReadMidiWithMido(mid);
    std::vector<TimedBytes> events;
    std::istringstream header(lines.empty() ? "" : lines[0]);
    double format = 0, division = 0, tempo = 500000.0;
    header >> format >> division;
    for (size_t i = 1; i < lines.size(); ++i) {
        std::istringstream in(lines[i]);
        double ticks = 0;
        std::string what;
        in >> ticks >> what;
        if (what != "meta") {
            events.emplace_back(ticks * tempo / (division * 1000.0), what);
        } else if (in >> what; what == "set_tempo") {
            in >> tempo;
        }
    }
    return events;
}

// The plugin's events on the converter's millisecond clock: the decisions on the k-th
// 16-sample frame sit at its last sample and carry the clock of frame k, which advances by
// 16 samples' worth of milliseconds a frame, summed as the node sums it.
std::vector<TimedBytes> OnConverterClock(const std::vector<MidiEvent>& events) {
    std::vector<TimedBytes> out;
    int64_t frame = 0;
    double clock = 0.0;
    for (const MidiEvent& e : events) {
        if (e.frame == 0) {
            continue; // activation and parameter changes, before any audio
        }
        EXPECT_EQ(e.frame % 16, 15) << "an event between two frame ends";
        for (; frame < e.frame / 16; ++frame) {
            clock += 16000.0 / kRate;
        }
        std::string hex;
        for (uint8_t b : e.bytes) {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02x", b);
            hex += digits;
        }
        out.emplace_back(std::trunc(clock), hex);
    }
    return out;
}

struct Settings {
    std::string name;
    std::string convertArguments;
    std::vector<std::pair<PortIndex, float>> ports;
};

class PluginAgainstConvert : public ::testing::TestWithParam<Settings> {};

TEST_P(PluginAgainstConvert, SendsTheSameEventsAtTheSameTimes) {
    // A flute melody inside the default note range, rendered by FluidSynth.
    const std::vector<vocato::test::Note> melody = {{62, 0.2, 0.5},   {65, 0.6, 0.9},  {69, 1.0, 1.4},
                                                    {67, 1.5, 1.75}, {64, 1.85, 2.1}, {60, 2.2, 2.7}};
    vocato::test::TempDir dir;
    const std::string wav = dir.File("melody.wav");
    vocato::test::WriteSoundFile(wav, vocato::test::RenderMelody(melody, 73, kRate), kRate);
    // What the converter reads from the file, as a host's floats: libsndfile gives k / 32768
    // for sample k.
    SF_INFO info{};
    SNDFILE* file = sf_open(wav.c_str(), SFM_READ, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    std::vector<float> audio(static_cast<size_t>(info.frames));
    sf_read_float(file, audio.data(), info.frames);
    sf_close(file);
    std::vector<TimedBytes> converted =
        ConvertedEvents(wav, dir.File("melody.mid"), GetParam().convertArguments);
    // The recording opens with the program, the bend range and full expression at time 0.
    ASSERT_GT(converted.size(), kOpeningEvents);
    converted.erase(converted.begin(), converted.begin() + kOpeningEvents);
    const auto noteOns = std::ranges::count_if(converted, [](const TimedBytes& e) {
        return e.second[0] == '9' && e.second.substr(4) != "00";
    });
    ASSERT_GE(noteOns, std::ssize(melody)) << "the melody is not what the test assumes";

    // Block sizes a host may use: a power of two, and sizes that cut frames apart.
    for (const std::vector<uint32_t>& blocks :
         {std::vector<uint32_t>{256}, std::vector<uint32_t>{1, 100, 333, 7, 1024}}) {
        SCOPED_TRACE(::testing::PrintToString(blocks));
        TestHost host(kRate);
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
                      Settings{"MedianAndConfirm", "--median --confirm", {{kMedian, 1}, {kConfirm, 1}}}),
    [](const auto& info) { return info.param.name; });

} // namespace
} // namespace vocato::lv2::test
