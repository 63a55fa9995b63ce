// A sound file as a producer: its own thread reads the file and delivers it to the consumer
// in real time, one buffer per deadline on the monotonic clock, from the position last
// sought. The consumer runs on that thread.
#pragma once

#include "Producer.h"
#include "SoundFileReader.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace vocato::media {

class SoundFileProducer final : public Producer {
public:
    static constexpr size_t kBufferFrames = 256;

    // Not the audio thread. True when a reader accepts the file.
    static bool CanRead(const std::string& path);

    SoundFileProducer() = default;
    ~SoundFileProducer() override;

    // Controller thread. Gives the producer its file; false with one sentence in `error`.
    bool SetFile(const std::string& path, std::string& error);
    const SoundFileInfo& Info() const noexcept { return info_; }

    // Controller thread.
    bool GetFreeOutput(MediaSource* out) override;
    bool Connect(BufferConsumer& consumer, MediaFormat* format) override;
    void Disconnect() override;
    int64_t Latency() const override;
    void Start(int64_t performanceTime) override;
    void Stop() override;
    void Seek(int64_t mediaTime) override;

    // Any thread.
    bool Running() const noexcept { return running_.load(std::memory_order_acquire); }
    // True once the file has played to its end (until the next Seek).
    bool Finished() const noexcept { return finished_.load(std::memory_order_acquire); }
    // The frame of the file that the next buffer starts with.
    int64_t Position() const noexcept { return position_.load(std::memory_order_relaxed); }

private:
    void Play(int64_t startMicros);

    std::string path_;
    std::unique_ptr<SoundFileReader> reader_;
    SoundFileInfo info_;
    BufferConsumer* consumer_ = nullptr;
    std::vector<int16_t> samples_;
    std::thread thread_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> running_{false};
    std::atomic<bool> finished_{false};
    std::atomic<int64_t> position_{0};
};

} // namespace vocato::media
