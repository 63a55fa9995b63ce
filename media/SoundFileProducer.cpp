#include "SoundFileProducer.h"

#include "AudioThread.h"

#include <algorithm>
#include <chrono>

namespace vocato::media {
namespace {

using Micros = std::chrono::microseconds;
using TimePoint = std::chrono::steady_clock::time_point;

TimePoint AtMicros(int64_t micros) { return TimePoint(Micros(micros)); }

} // namespace

bool SoundFileProducer::CanRead(const std::string& path) {
    std::string ignored;
    return SoundFileReader::Open(path, ignored) != nullptr;
}

SoundFileProducer::~SoundFileProducer() { Stop(); }

bool SoundFileProducer::SetFile(const std::string& path, std::string& error) {
    Stop();
    auto reader = SoundFileReader::Open(path, error);
    if (reader == nullptr) {
        return false;
    }
    reader_ = std::move(reader);
    path_ = path;
    info_ = reader_->Info();
    samples_.assign(kBufferFrames * info_.channels, 0);
    finished_ = false;
    position_ = 0;
    return true;
}

bool SoundFileProducer::GetFreeOutput(MediaSource* out) {
    if (reader_ == nullptr || consumer_ != nullptr) {
        return false;
    }
    *out = MediaSource{NodeId(), 0};
    return true;
}

bool SoundFileProducer::Connect(BufferConsumer& consumer, MediaFormat* format) {
    if (reader_ == nullptr || consumer_ != nullptr) {
        return false;
    }
    format->type = MediaType::RawAudio;
    format->raw.frameRate = info_.sampleRate;
    format->raw.channelCount = info_.channels;
    format->raw.format = SampleFormat::Int16;
    format->raw.bufferSize = kBufferFrames * info_.channels * sizeof(int16_t);
    consumer_ = &consumer;
    return true;
}

void SoundFileProducer::Disconnect() {
    Stop();
    consumer_ = nullptr;
}

int64_t SoundFileProducer::Latency() const {
    if (info_.sampleRate <= 0.0) {
        return 0;
    }
    return static_cast<int64_t>(1e6 * kBufferFrames / info_.sampleRate);
}

void SoundFileProducer::Start(int64_t performanceTime) {
    if (Running() || reader_ == nullptr || consumer_ == nullptr) {
        return;
    }
    if (thread_.joinable()) {
        thread_.join(); // the last play ended by itself
    }
    stop_ = false;
    running_ = true;
    // A start time already past plays at once rather than rushing to catch up.
    const int64_t now = std::chrono::duration_cast<Micros>(
                            std::chrono::steady_clock::now().time_since_epoch())
                            .count();
    thread_ = std::thread(&SoundFileProducer::Play, this, std::max(performanceTime, now));
}

void SoundFileProducer::Stop() {
    stop_ = true;
    if (thread_.joinable()) {
        thread_.join();
    }
    running_ = false;
}

void SoundFileProducer::Seek(int64_t mediaTime) {
    Stop();
    if (path_.empty()) {
        return;
    }
    std::string error;
    auto reader = SoundFileReader::Open(path_, error);
    if (reader == nullptr) {
        return; // the file went away; the old reader stays at its end
    }
    reader_ = std::move(reader);
    position_ = 0;
    auto skip = static_cast<int64_t>(static_cast<double>(mediaTime) * info_.sampleRate / 1e6);
    while (skip > 0) {
        const size_t n = reader_->Read(samples_.data(), std::min<int64_t>(skip, kBufferFrames));
        if (n == 0) {
            break;
        }
        skip -= static_cast<int64_t>(n);
        position_.fetch_add(static_cast<int64_t>(n), std::memory_order_relaxed);
    }
    finished_ = false;
}

void SoundFileProducer::Play(int64_t startMicros) {
    // Each buffer is delivered when its last sample would have arrived from a live source.
    int64_t framesPlayed = 0;
    while (!stop_.load(std::memory_order_acquire)) {
        const size_t n = reader_->Read(samples_.data(), kBufferFrames);
        if (n == 0) {
            finished_ = true;
            break;
        }
        framesPlayed += static_cast<int64_t>(n);
        const int64_t due = startMicros + static_cast<int64_t>(
                                              1e6 * static_cast<double>(framesPlayed) /
                                              info_.sampleRate);
        std::this_thread::sleep_until(AtMicros(due));
        if (stop_.load(std::memory_order_acquire)) {
            break;
        }
        Buffer buffer;
        buffer.type = BufferType::RawAudio;
        buffer.data = samples_.data();
        buffer.sizeUsed = n * info_.channels * sizeof(int16_t);
        buffer.startTime = due;
        {
            AudioThreadScope audio;
            consumer_->BufferReceived(buffer);
        }
        position_.fetch_add(static_cast<int64_t>(n), std::memory_order_relaxed);
    }
    running_ = false;
}

} // namespace vocato::media
