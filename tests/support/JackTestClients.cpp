#include "JackTestClients.h"

#include <jack/midiport.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace vocato::test {
namespace {

ClientHandle OpenClient(const std::string& name) {
    return ClientHandle(jack_client_open(name.c_str(), JackNoStartServer, nullptr));
}

} // namespace

PlayerClient::PlayerClient(const std::string& name, std::vector<float> signal)
    : signal_(std::move(signal)) {
    client_ = OpenClient(name);
    if (client_ == nullptr) {
        return;
    }
    out_ = jack_port_register(client_.get(), "out", JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput, 0);
    jack_set_process_callback(client_.get(), &PlayerClient::Process, this);
    jack_activate(client_.get());
}

bool PlayerClient::ConnectTo(const std::string& port) {
    return jack_connect(client_.get(), jack_port_name(out_), port.c_str()) == 0;
}

int PlayerClient::Process(jack_nframes_t frames, void* arg) {
    auto* self = static_cast<PlayerClient*>(arg);
    auto* out = static_cast<float*>(jack_port_get_buffer(self->out_, frames));
    std::fill(out, out + frames, 0.0f);
    if (!self->playing_.load() || self->done_.load()) {
        return 0;
    }
    if (self->start_.load() < 0) {
        self->start_.store(jack_last_frame_time(self->client_.get()));
    }
    const size_t n = std::min<size_t>(frames, self->signal_.size() - self->position_);
    std::copy_n(self->signal_.begin() + static_cast<std::ptrdiff_t>(self->position_), n, out);
    self->position_ += n;
    self->done_.store(self->position_ >= self->signal_.size());
    return 0;
}

RecorderClient::RecorderClient(const std::string& name, size_t audioFrames)
    : events_(65536), audio_(audioFrames) {
    client_ = OpenClient(name);
    if (client_ == nullptr) {
        return;
    }
    midiIn_ = jack_port_register(client_.get(), "midi_in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    audioIn_ = jack_port_register(client_.get(), "audio_in", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    jack_set_process_callback(client_.get(), &RecorderClient::Process, this);
    jack_activate(client_.get());
}

bool RecorderClient::Connect(const std::string& from, const std::string& to) {
    return jack_connect(client_.get(), from.c_str(), to.c_str()) == 0;
}

std::vector<RecordedEvent> RecorderClient::Events() const {
    return {events_.begin(), events_.begin() + static_cast<std::ptrdiff_t>(eventCount_.load())};
}

std::vector<float> RecorderClient::Audio() const {
    return {audio_.begin(), audio_.begin() + static_cast<std::ptrdiff_t>(audioCount_.load())};
}

int RecorderClient::Process(jack_nframes_t frames, void* arg) {
    auto* self = static_cast<RecorderClient*>(arg);
    const int64_t now = jack_last_frame_time(self->client_.get());
    void* midi = jack_port_get_buffer(self->midiIn_, frames);
    size_t stored = self->eventCount_.load();
    jack_midi_event_t event;
    for (uint32_t i = 0; i < jack_midi_get_event_count(midi) && stored < self->events_.size();
         ++i) {
        if (jack_midi_event_get(&event, midi, i) == 0) {
            RecordedEvent& r = self->events_[stored++];
            r = {now + event.time, event.time, {}, std::min<uint32_t>(event.size, 3)};
            std::copy_n(event.buffer, r.size, r.bytes);
        }
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

bool WaitFor(const std::function<bool()>& done, double seconds, const std::function<void()>& tick) {
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
