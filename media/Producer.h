// What the connection logic needs of a producer of raw audio: a free output, a connection to
// one consumer with a format both agree on, a latency, and start, stop and seek. Producers
// are compared by their node id, which no two producers of a process share.
#pragma once

#include "MediaTypes.h"

#include <cstdint>

namespace vocato::media {

// Where a producer delivers its buffers. Called on the producer's own thread, one buffer at a
// time; the consumer may rewrite the data while it handles it.
class BufferConsumer {
public:
    virtual ~BufferConsumer() = default;
    virtual void BufferReceived(Buffer& buffer) noexcept = 0;
};

class Producer {
public:
    Producer() noexcept;
    virtual ~Producer() = default;
    Producer(const Producer&) = delete;
    Producer& operator=(const Producer&) = delete;

    // Any thread.
    int32_t NodeId() const noexcept { return id_; }

    // The controller's thread, for all of the following.
    // False when the producer has no output that is free to connect.
    virtual bool GetFreeOutput(MediaSource* out) = 0;
    // Offers the output to `consumer`; `format` comes in as a proposal (wildcards allowed)
    // and goes out as the format of the connection. False when the producer refuses.
    virtual bool Connect(BufferConsumer& consumer, MediaFormat* format) = 0;
    virtual void Disconnect() = 0;
    // Microseconds from a buffer's first sample to its delivery.
    virtual int64_t Latency() const = 0;
    // Starts delivering at `performanceTime` (microseconds on the system clock).
    virtual void Start(int64_t performanceTime) = 0;
    // Stops at once: when it returns, the consumer is no longer called.
    virtual void Stop() = 0;
    // The position, in microseconds of media time, that the next Start plays from.
    virtual void Seek(int64_t mediaTime) = 0;

private:
    int32_t id_;
};

} // namespace vocato::media
