#include "Fixtures.h"

#include "FluidSynthSink.h"
#include "MidiMessage.h"
#include "SoundFontProbe.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sndfile.hh>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>

namespace vocato::test {

TempDir::TempDir()
    : path_((std::filesystem::temp_directory_path() / "vocato-test-XXXXXX").string()) {
    if (::mkdtemp(path_.data()) == nullptr) {
        throw std::runtime_error("mkdtemp failed");
    }
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::vector<float> Sine(double hz, double rate, double seconds, double amplitude) {
    std::vector<float> out(static_cast<size_t>(seconds * rate));
    for (size_t i = 0; i < out.size(); ++i) {
        out[i] = static_cast<float>(amplitude * std::sin(2.0 * M_PI * hz * i / rate));
    }
    return out;
}

void WriteSoundFile(const std::string& path, const std::vector<float>& interleaved, int rate,
                    int channels, int format) {
    SndfileHandle file(path, SFM_WRITE, format, channels, rate);
    if (file.error() != SF_ERR_NO_ERROR) {
        throw std::runtime_error("cannot write " + path + ": " + file.strError());
    }
    file.writef(interleaved.data(), static_cast<sf_count_t>(interleaved.size() / channels));
}

std::string WriteTone(const TempDir& dir, const std::string& name, double seconds) {
    WriteSoundFile(dir.File(name), Sine(440.0, 44100.0, seconds));
    return dir.File(name);
}

std::vector<float> RenderMelody(const std::vector<Note>& notes, int program, double rate,
                                double tailSeconds) {
    auto synth = media::FluidSynthSink::Create(rate);
    const auto font = media::FindSoundFont(media::SoundFontProbeList());
    if (synth == nullptr || !font || !synth->LoadSoundFont(*font)) {
        throw std::runtime_error("no General MIDI SoundFont to render with");
    }
    synth->Send(media::midi::ProgramChange(1, static_cast<uint8_t>(program)), 0);
    std::multimap<size_t, media::MidiMessage> events;
    double end = 0.0;
    for (const Note& n : notes) {
        const auto key = static_cast<uint8_t>(n.key);
        events.emplace(static_cast<size_t>(n.onset * rate), media::midi::NoteOn(1, key, 100));
        events.emplace(static_cast<size_t>(n.offset * rate), media::midi::NoteOff(1, key, 0));
        end = std::max(end, n.offset);
    }
    const auto total = static_cast<size_t>((end + tailSeconds) * rate);
    std::vector<float> left(total), right(total), mono(total);
    size_t at = 0;
    for (const auto& [when, message] : events) {
        synth->Render(left.data() + at, right.data() + at, when - at);
        synth->Send(message, 0);
        at = when;
    }
    synth->Render(left.data() + at, right.data() + at, total - at);
    float peak = 0.0f;
    for (size_t i = 0; i < total; ++i) {
        mono[i] = 0.5f * (left[i] + right[i]);
        peak = std::max(peak, std::fabs(mono[i]));
    }
    // Normalised to a peak of -3 dBFS, as the benchmark's recordings are.
    const float gain = peak > 0.0f ? 0.708f / peak : 1.0f;
    for (float& v : mono) {
        v *= gain;
    }
    return mono;
}

double EstimatePitchHz(const float* x, size_t count, double rate) {
    const auto minLag = static_cast<size_t>(rate / 2000.0);
    const auto maxLag = std::min(static_cast<size_t>(rate / 40.0), count / 2);
    std::vector<double> r(maxLag + 1, 0.0);
    double best = 0.0;
    for (size_t lag = minLag; lag <= maxLag; ++lag) {
        double sum = 0.0;
        for (size_t i = 0; i + lag < count; ++i) {
            sum += static_cast<double>(x[i]) * x[i + lag];
        }
        r[lag] = sum / static_cast<double>(count - lag);
        best = std::max(best, r[lag]);
    }
    if (best <= 0.0) {
        return 0.0;
    }
    // The first peak that comes close to the highest one is the period; later peaks are its
    // multiples.
    for (size_t lag = minLag + 1; lag < maxLag; ++lag) {
        if (r[lag] >= 0.9 * best && r[lag] >= r[lag - 1] && r[lag] >= r[lag + 1]) {
            const double a = r[lag - 1], b = r[lag], c = r[lag + 1];
            const double shift = 0.5 * (a - c) / (a - 2.0 * b + c);
            return rate / (static_cast<double>(lag) + shift);
        }
    }
    return 0.0;
}

double Cents(double hz, double reference) {
    return 1200.0 * std::log2(hz / reference);
}

CommandOutcome RunCommand(const std::string& command) {
    CommandOutcome outcome{-1, {}};
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return outcome;
    }
    char chunk[512];
    while (const size_t n = std::fread(chunk, 1, sizeof chunk, pipe)) {
        outcome.out.append(chunk, n);
    }
    const int raw = ::pclose(pipe);
    outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return outcome;
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<int> KeysOf(const std::vector<std::string>& midoLines, char status) {
    std::vector<int> keys;
    for (const std::string& line : midoLines) {
        const std::string bytes = line.substr(line.find(' ') + 1);
        if (bytes.size() == 6 && bytes[0] == status &&
            !(status == '9' && bytes.substr(4) == "00")) {
            keys.push_back(std::stoi(bytes.substr(2, 2), nullptr, 16));
        }
    }
    return keys;
}

std::vector<std::string> ReadMidiWithMido(const std::string& path) {
    const std::string script = "import sys, mido\n"
                               "m = mido.MidiFile(sys.argv[1])\n"
                               "print(m.type, m.ticks_per_beat)\n"
                               "for track in m.tracks:\n"
                               "    t = 0\n"
                               "    for msg in track:\n"
                               "        t += msg.time\n"
                               "        if msg.is_meta:\n"
                               "            print(t, 'meta', msg.type, getattr(msg, 'tempo', ''))\n"
                               "        else:\n"
                               "            print(t, msg.bytes() and bytes(msg.bytes()).hex())\n";
    const CommandOutcome run =
        RunCommand("/usr/bin/python3 -c \"" + script + "\" '" + path + "' 2>&1");
    std::vector<std::string> lines;
    std::istringstream in(run.out);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line.substr(0, line.find_last_not_of(' ') + 1));
    }
    return lines;
}

} // namespace vocato::test
