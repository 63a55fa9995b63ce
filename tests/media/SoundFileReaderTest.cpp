#include "Fixtures.h"

#include "SoundFileReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

using vocato::media::SoundFileReader;
using vocato::test::TempDir;
using vocato::test::WriteSoundFile;

namespace {

std::string OpenError(const std::string& path) {
    std::string error;
    EXPECT_EQ(SoundFileReader::Open(path, error), nullptr);
    return error;
}

} // namespace

TEST(SoundFileReader, EveryStoredFormatReadsAsTheSame16BitSamplesAndLoudFloatClips) {
    struct Case {
        int format;
        std::vector<float> samples;
        int tolerance; // in 16-bit steps
    };
    const std::vector<float> ramp = {0.5f, -0.5f, 0.25f, -1.0f, 0.0f, 0.9f};
    for (const Case& c : {Case{SF_FORMAT_PCM_16, ramp, 1}, Case{SF_FORMAT_PCM_U8, ramp, 2 * 256},
                          Case{SF_FORMAT_PCM_24, ramp, 1}, Case{SF_FORMAT_FLOAT, ramp, 1},
                          Case{SF_FORMAT_FLOAT, {1.5f, -1.5f}, 1}}) {
        TempDir dir;
        WriteSoundFile(dir.File("f.wav"), c.samples, 44100, 1, SF_FORMAT_WAV | c.format);
        std::string error;
        auto reader = SoundFileReader::Open(dir.File("f.wav"), error);
        ASSERT_NE(reader, nullptr) << error;
        EXPECT_EQ(reader->Info().frames, std::ssize(c.samples));
        int16_t got[8] = {};
        ASSERT_EQ(reader->Read(got, 8), c.samples.size());
        for (size_t i = 0; i < c.samples.size(); ++i) {
            EXPECT_NEAR(got[i], std::clamp(c.samples[i], -1.0f, 1.0f) * 32767.0f, c.tolerance)
                << "format " << std::hex << c.format << " sample " << i;
        }
    }
}

TEST(SoundFileReader, HostileFilesGiveOneClearSentenceAndACutOneReadsWhatIsThere) {
    TempDir dir;
    EXPECT_NE(OpenError(dir.File("missing.wav")).find("No such file"), std::string::npos);
    EXPECT_NE(OpenError(dir.Path()).find("directory"), std::string::npos);

    std::ofstream(dir.File("empty.wav")).close();
    EXPECT_NE(OpenError(dir.File("empty.wav")).find("empty"), std::string::npos);
    std::ofstream(dir.File("notes.txt")) << "this is not audio at all, just words in a file\n";
    EXPECT_NE(OpenError(dir.File("notes.txt")).find("not a sound file"), std::string::npos);

    const std::string cut = dir.File("cut-in-header.wav");
    WriteSoundFile(cut, vocato::test::Sine(440, 44100, 1.0));
    std::filesystem::resize_file(cut, 44 + 2 * 1000); // cut inside the audio: what is there reads
    std::string error;
    auto reader = SoundFileReader::Open(cut, error);
    ASSERT_NE(reader, nullptr) << error;
    std::vector<int16_t> samples(4096);
    EXPECT_EQ(reader->Read(samples.data(), 4096), 1000u);
    EXPECT_EQ(reader->Read(samples.data(), 4096), 0u);
    std::filesystem::resize_file(cut, 20);
    EXPECT_NE(OpenError(cut).find("cut-in-header.wav"), std::string::npos);

    const std::string secret = dir.File("secret.wav");
    WriteSoundFile(secret, {0.1f, 0.2f});
    ::chmod(secret.c_str(), 0);
    if (::geteuid() != 0) { // root reads whatever the permissions say
        EXPECT_NE(OpenError(secret).find("Permission denied"), std::string::npos);
    }
}
