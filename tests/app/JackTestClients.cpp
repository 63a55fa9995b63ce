#include "JackTestClients.h"

#include <jack/midiport.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace vocato::test {
namespace {

jack_client_t* OpenClient(const std::string& name) {
    jack_status_t status{};
    return jack_client_open(name.c_str(), JackNoStartServer, &status);
}

} // namespace

PlayerClient::PlayerClient(const std::string& name, std::vector<float> signal)
    : signal_(std::move(signal)) {
    client_ = OpenClient(name);
    if (client_ == nullptr) {
        return;
    }
    out_ = jack_port_register(client_, "out", JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput, 0);
    jack_set_process_callback(client_, &PlayerClient::Process, this);
    jack_activate(client_);
}

PlayerClient::~PlayerClient() {
    if (client_ != nullptr) {
        jack_client_close(client_);
    }
}

std::string PlayerClient::Port() const { return jack_port_name(out_); }

bool PlayerClient::ConnectTo(const std::string& port) {
    return jack_connect(client_, jack_port_name(out_), port.c_str()) == 0;
}

int PlayerClient::Process(jack_nframes_t frames, void* arg) {
    auto* self = static_cast<PlayerClient*>(arg);
    auto* out = static_cast<float*>(jack_port_get_buffer(self->out_, frames));
    std::fill(out, out + frames, 0.0f);
    if (!self->playing_.load() || self->done_.load()) {
        return 0;
    }
    if (self->start_.load() < 0) {
        self->start_.store(jack_last_frame_time(self->client_));
    }
    const size_t n = std::min<size_t>(frames, self->signal_.size() - self->position_);
    std::copy_n(self->signal_.begin() + static_cast<std::ptrdiff_t>(self->position_), n, out);
    self->position_ += n;
    if (self->position_ >= self->signal_.size()) {
        self->done_.store(true);
    }
    return 0;
}

RecorderClient::RecorderClient(const std::string& name, size_t audioFrames)
    : events_(65536), audio_(audioFrames) {
    client_ = OpenClient(name);
    if (client_ == nullptr) {
        return;
    }
    midiIn_ = jack_port_register(client_, "midi_in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    audioIn_ = jack_port_register(client_, "audio_in", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    jack_set_process_callback(client_, &RecorderClient::Process, this);
    jack_activate(client_);
}

RecorderClient::~RecorderClient() {
    if (client_ != nullptr) {
        jack_client_close(client_);
    }
}

std::string RecorderClient::MidiPort() const { return jack_port_name(midiIn_); }
std::string RecorderClient::AudioPort() const { return jack_port_name(audioIn_); }

bool RecorderClient::Connect(const std::string& from, const std::string& to) {
    return jack_connect(client_, from.c_str(), to.c_str()) == 0;
}

std::vector<RecordedEvent> RecorderClient::Events() const {
    const size_t n = eventCount_.load();
    return {events_.begin(), events_.begin() + static_cast<std::ptrdiff_t>(n)};
}

std::vector<float> RecorderClient::Audio() const {
    const size_t n = audioCount_.load();
    return {audio_.begin(), audio_.begin() + static_cast<std::ptrdiff_t>(n)};
}

int RecorderClient::Process(jack_nframes_t frames, void* arg) {
    auto* self = static_cast<RecorderClient*>(arg);
    const int64_t now = jack_last_frame_time(self->client_);
    void* midi = jack_port_get_buffer(self->midiIn_, frames);
    const uint32_t count = jack_midi_get_event_count(midi);
    size_t stored = self->eventCount_.load();
    for (uint32_t i = 0; i < count && stored < self->events_.size(); ++i) {
        jack_midi_event_t event;
        if (jack_midi_event_get(&event, midi, i) != 0) {
            continue;
        }
        RecordedEvent& r = self->events_[stored++];
        r.frame = now + event.time;
        r.offset = event.time;
        r.size = static_cast<uint32_t>(std::min<size_t>(event.size, 3));
        std::copy_n(event.buffer, r.size, r.bytes);
    }
    self->eventCount_.store(stored);
    if (self->audioStart_.load() < 0) {
        self->audioStart_.store(now);
    }
    const auto* in = static_cast<const float*>(jack_port_get_buffer(self->audioIn_, frames));
    const size_t at = self->audioCount_.load();
    const size_t n = std::min<size_t>(frames, self->audio_.size() - at);
    std::copy_n(in, n, self->audio_.begin() + static_cast<std::ptrdiff_t>(at));
    self->audioCount_.store(at + n);
    return 0;
}

bool WaitFor(const std::function<bool()>& done, double seconds,
             const std::function<void()>& tick) {
    const auto deadline = std::chrono::steady_clock::now() +
                          std::chrono::microseconds(static_cast<int64_t>(seconds * 1e6));
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        if (tick) {
            tick();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

} // namespace vocato::test
