// An ALSA sequencer output port named "Vocato" that other programs can subscribe to. The
// audio thread only queues messages; a sender thread of its own hands them to the sequencer.
#pragma once

#include "BoundedQueue.h"
#include "MidiSink.h"

#include <atomic>
#include <memory>
#include <semaphore.h>
#include <string>
#include <thread>

typedef struct _snd_seq snd_seq_t;
typedef struct snd_midi_event snd_midi_event_t;

namespace vocato::media {

class AlsaSequencerOutput final : public MidiSink {
public:
    // Not the audio thread. Null with one sentence in `error` when the system has no
    // sequencer or it refuses the port.
    static std::unique_ptr<AlsaSequencerOutput> Open(const std::string& portName,
                                                     std::string& error);
    ~AlsaSequencerOutput() override;

    // Audio thread. Queues the message; a full queue drops it and counts.
    void Send(const MidiMessage& message, uint32_t stampMs) noexcept override;

    // Not the audio thread. Subscribes the named port ("client:port", a port name or a
    // client name) to ours; false when there is no such port.
    bool ConnectTo(const std::string& target);

    // Any thread.
    uint64_t Dropped() const noexcept { return dropped_.load(std::memory_order_relaxed); }

private:
    AlsaSequencerOutput(snd_seq_t* seq, int port, snd_midi_event_t* encoder);
    void Run();

    snd_seq_t* seq_;
    int port_;
    snd_midi_event_t* encoder_;
    BoundedQueue<MidiMessage, 1024> queue_;
    sem_t pending_;
    std::thread thread_;
    std::atomic<bool> stop_{false};
    std::atomic<uint64_t> dropped_{0};
};

} // namespace vocato::media
