// Two JACK clients for the tests: a player that feeds a prepared signal into a port, and a
// recorder of MIDI events (with their absolute frames) and of audio.
#pragma once

#include <jack/jack.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vocato::test {

struct ClientCloser {
    void operator()(jack_client_t* client) const { jack_client_close(client); }
};
// Declared last in each client, so that it closes, and its process callback stops, before the
// buffers that callback uses are freed.
using ClientHandle = std::unique_ptr<jack_client_t, ClientCloser>;

class PlayerClient {
public:
    PlayerClient(const std::string& name, std::vector<float> signal);
    bool Ok() const { return client_ != nullptr; }
    bool ConnectTo(const std::string& port);
    // The signal starts at the next cycle.
    void Play() { playing_.store(true); }
    // The absolute frame of the signal's first sample; -1 until it has started.
    int64_t StartFrame() const { return start_.load(); }
    bool Done() const { return done_.load(); }

private:
    static int Process(jack_nframes_t frames, void* self);
    jack_port_t* out_ = nullptr;
    std::vector<float> signal_;
    size_t position_ = 0;
    std::atomic<bool> playing_{false};
    std::atomic<bool> done_{false};
    std::atomic<int64_t> start_{-1};
    ClientHandle client_;
};

struct RecordedEvent {
    int64_t frame;    // absolute
    uint32_t offset;  // in its period
    uint8_t bytes[3];
    uint32_t size;
};

class RecorderClient {
public:
    RecorderClient(const std::string& name, size_t audioFrames);
    bool Ok() const { return client_ != nullptr; }
    std::string MidiPort() const { return jack_port_name(midiIn_); }
    std::string AudioPort() const { return jack_port_name(audioIn_); }
    bool Connect(const std::string& from, const std::string& to);
    std::vector<RecordedEvent> Events() const;
    // Audio recorded from the first cycle on; the absolute frame of its first sample.
    std::vector<float> Audio() const;
    int64_t AudioStartFrame() const { return audioStart_.load(); }

private:
    static int Process(jack_nframes_t frames, void* self);
    jack_port_t* midiIn_ = nullptr;
    jack_port_t* audioIn_ = nullptr;
    std::vector<RecordedEvent> events_;
    std::atomic<size_t> eventCount_{0};
    std::vector<float> audio_;
    std::atomic<size_t> audioCount_{0};
    std::atomic<int64_t> audioStart_{-1};
    ClientHandle client_;
};

// Polls `done` every 10 ms for at most `seconds`, calling `tick` in between.
bool WaitFor(const std::function<bool()>& done, double seconds,
             const std::function<void()>& tick = {});

} // namespace vocato::test
