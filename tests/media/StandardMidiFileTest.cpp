#include "Fixtures.h"

#include "MidiStore.h"
#include "StandardMidiFile.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>

namespace midi = vocato::media::midi;
using vocato::media::EncodeStandardMidiFile;
using vocato::media::ExportStandardMidiFile;
using vocato::media::MidiStore;
using vocato::test::ReadFile;
using vocato::test::TempDir;

namespace {

size_t FilesIn(const std::string& dir) {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(dir), {}));
}

} // namespace

TEST(StandardMidiFile, EncodesFormat0WithOneTickPerMillisecondByteForByte) {
    MidiStore store(16);
    store.Add(0, midi::ProgramChange(1, 73));
    store.Add(200, midi::NoteOn(1, 60, 100));
    store.Add(100, midi::ControlChange(1, 11, 90));  // out of order: sorted on export
    store.Add(200 + 16384, midi::NoteOff(1, 60, 0)); // a delta that needs three bytes
    const std::vector<uint8_t> expected = {
        'M',  'T',  'h',  'd',  0,    0,  0,    6,    0,    0,    0,    1,    0x01,
        0xF4, 'M',  'T',  'r',  'k',  0,  0,    0,    28,   0x00, 0xFF, 0x51, 0x03,
        0x07, 0xA1, 0x20, 0x00, 0xC0, 73, 0x64, 0xB0, 11,   90,   0x64, 0x90, 60,
        100,  0x81, 0x80, 0x00, 0x80, 60, 0,    0x00, 0xFF, 0x2F, 0x00,
    };
    EXPECT_EQ(EncodeStandardMidiFile(store), expected);
}

TEST(StandardMidiFile, AFailedWriteLeavesThePreviousFileWhichALaterWriteReplacesWhole) {
    TempDir dir;
    const std::string path = dir.File("take.mid");
    const std::string previous(10000, 'x'); // longer than what replaces it
    std::ofstream(path) << previous;
    MidiStore store(100000);
    for (uint32_t i = 0; i < 100000; ++i) {
        store.Add(i, midi::NoteOn(1, 60, 100));
    }
    // A file-size limit makes the write fail part-way, as a full disk does.
    rlimit saved{};
    ::getrlimit(RLIMIT_FSIZE, &saved);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{4096, saved.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const auto result = ExportStandardMidiFile(store, path);
    ::setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);
    EXPECT_FALSE(result.ok);
    EXPECT_NE(result.error.find("take.mid"), std::string::npos) << result.error;
    EXPECT_EQ(ReadFile(path), previous);
    EXPECT_EQ(FilesIn(dir.Path()), 1u);

    MidiStore shorter(4);
    shorter.Add(0, midi::NoteOn(1, 60, 1));
    ASSERT_TRUE(ExportStandardMidiFile(shorter, path).ok);
    const std::vector<uint8_t> bytes = EncodeStandardMidiFile(shorter);
    EXPECT_EQ(ReadFile(path), std::string(bytes.begin(), bytes.end()));
    EXPECT_EQ(FilesIn(dir.Path()), 1u);
}

TEST(StandardMidiFile, AMissingDirectoryOrADirectoryAsTargetIsAClearError) {
    TempDir dir;
    MidiStore store(4);
    const auto missing = ExportStandardMidiFile(store, dir.File("no/such/dir/out.mid"));
    EXPECT_FALSE(missing.ok);
    EXPECT_NE(missing.error.find("No such file or directory"), std::string::npos) << missing.error;
    const auto isDir = ExportStandardMidiFile(store, dir.Path());
    EXPECT_FALSE(isDir.ok);
    EXPECT_NE(isDir.error.find("directory"), std::string::npos) << isDir.error;
    EXPECT_EQ(FilesIn(dir.Path()), 0u);
}
