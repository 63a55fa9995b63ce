// `vocato live --verbose`: the notes as they are played, one line each. The node thread
// queues them; the owner prints them.
#pragma once

#include "BoundedQueue.h"
#include "MidiSink.h"

#include <atomic>
#include <cstdio>

namespace vocato::app {

class NotePrinter final : public media::MidiSink {
public:
    // Node thread. Queues note-ons and the note-offs that end them (All Notes Off ends every
    // note of its channel); a full queue drops.
    void Send(const media::MidiMessage& message, uint32_t stampMs) noexcept override;

    // Owner thread. Prints what was queued: "note on  A4 (69) velocity 100".
    void Print(std::FILE* out);

private:
    struct Played {
        media::MidiMessage message;
        uint32_t stampMs;
    };
    media::BoundedQueue<Played, 512> queue_;
    // Node thread: the keys sent as on, so that the all-notes-off sweep (a note-off for every
    // key) queues only the notes it ends.
    bool on_[16][128] = {};
};

} // namespace vocato::app
