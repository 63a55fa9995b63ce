// The sound-file producer delivers its file in real time, in order, on its own thread, from
// the position last sought, and stops at once.
#include "Fixtures.h"

#include "AudioThread.h"
#include "SoundFileProducer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>
#include <vector>

namespace vocato::test {
namespace {

using Clock = std::chrono::steady_clock;

int64_t NowMicros() {
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch())
        .count();
}

// Keeps every sample it is given (the file is a ramp, so a sample tells its frame) and
// when it was given.
class Collector final : public media::BufferConsumer {
public:
    Collector() { samples.reserve(1 << 20); }
    void BufferReceived(media::Buffer& buffer) noexcept override {
        const auto* s = static_cast<const int16_t*>(buffer.data);
        samples.insert(samples.end(), s, s + buffer.sizeUsed / 2);
        onAudioThread = onAudioThread && media::OnAudioThread();
        if (first.load() == 0) {
            first = NowMicros();
        }
        last = NowMicros();
    }
    std::vector<int16_t> samples;
    bool onAudioThread = true;
    std::atomic<int64_t> first{0};
    std::atomic<int64_t> last{0};
};

class FileProducer : public ::testing::Test {
protected:
    void SetUp() override {
        // A ramp: frame i holds i modulo 32768, so order and position can be read back.
        std::vector<float> ramp(kFrames);
        for (size_t i = 0; i < ramp.size(); ++i) {
            ramp[i] = static_cast<float>(i % 32768) / 32767.0f;
        }
        WriteSoundFile(dir.File("ramp.wav"), ramp);
        std::string error;
        ASSERT_TRUE(producer.SetFile(dir.File("ramp.wav"), error)) << error;
        media::MediaSource source;
        ASSERT_TRUE(producer.GetFreeOutput(&source));
        media::MediaFormat format;
        ASSERT_TRUE(producer.Connect(collector, &format));
        EXPECT_EQ(format.raw.frameRate, 44100.0);
        EXPECT_EQ(format.raw.channelCount, 1u);
        EXPECT_FALSE(producer.GetFreeOutput(&source)) << "its one output is taken";
    }
    void WaitUntilFinished() {
        while (!producer.Finished()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    static constexpr size_t kFrames = 22050; // half a second
    TempDir dir;
    Collector collector;
    media::SoundFileProducer producer;
};

TEST_F(FileProducer, DeliversTheWholeFileInOrderAtTheSpeedOfItsSampleRate) {
    const int64_t start = NowMicros() + 50'000;
    producer.Start(start);
    WaitUntilFinished();
    producer.Stop();
    ASSERT_EQ(collector.samples.size(), kFrames);
    for (size_t i = 0; i < kFrames; ++i) {
        ASSERT_EQ(collector.samples[i], static_cast<int16_t>(i % 32768)) << i;
    }
    EXPECT_TRUE(collector.onAudioThread);
    // The first buffer is due one buffer after the start; the last at the file's end.
    EXPECT_GE(collector.first.load() - start, 5'000);
    const double seconds = static_cast<double>(collector.last.load() - start) / 1e6;
    EXPECT_NEAR(seconds, 0.5, 0.05);
}

TEST_F(FileProducer, StopEndsDeliveryAtOnceAndSeekChoosesWhereTheNextStartBegins) {
    producer.Start(NowMicros());
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    producer.Stop();
    const size_t delivered = collector.samples.size();
    EXPECT_GT(delivered, 0u);
    EXPECT_LT(delivered, kFrames);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(collector.samples.size(), delivered);
    EXPECT_FALSE(producer.Running());

    collector.samples.clear();
    producer.Seek(250'000); // a quarter of a second: frame 11025
    EXPECT_EQ(producer.Position(), 11025);
    producer.Start(NowMicros());
    WaitUntilFinished();
    ASSERT_FALSE(collector.samples.empty());
    EXPECT_EQ(collector.samples.front(), 11025);
    EXPECT_EQ(collector.samples.size(), kFrames - 11025);
}

TEST(SoundFileProducerFiles, OnlyFilesAReaderAcceptsCanBeGiven) {
    TempDir dir;
    const std::string text = dir.File("text.wav");
    std::ofstream(text) << "RIFF but not really\n";
    EXPECT_FALSE(media::SoundFileProducer::CanRead(text));
    EXPECT_FALSE(media::SoundFileProducer::CanRead(dir.File("missing.wav")));
    media::SoundFileProducer producer;
    std::string error;
    EXPECT_FALSE(producer.SetFile(text, error));
    EXPECT_FALSE(error.empty());
    media::MediaSource source;
    EXPECT_FALSE(producer.GetFreeOutput(&source)) << "no file, no output";
}

} // namespace
} // namespace vocato::test
