#include "JackClient.h"

#include "AudioThread.h"

#include <jack/jack.h>
#include <jack/midiport.h>

#include <cerrno>
#include <chrono>
#include <thread>
#include <cstdio>
#include <cstring>

namespace vocato::media {
namespace {

// libjack prints its own complaints to standard error, some from the process thread; Vocato
// reports what matters once, in words, from its own thread.
void Quiet(const char*) {}

std::string PortName(jack_port_t* port) { return port != nullptr ? jack_port_name(port) : ""; }

// A client that asks its server for ports it does not own: the list is freed here.
std::string FirstPorts(jack_client_t* client, unsigned long flags, int index) {
    const char** ports = jack_get_ports(client, nullptr, JACK_DEFAULT_AUDIO_TYPE, flags);
    if (ports == nullptr) {
        return {};
    }
    std::string name;
    for (int i = 0; ports[i] != nullptr; ++i) {
        if (i == index) {
            name = ports[i];
        }
    }
    jack_free(ports);
    return name;
}

} // namespace

// JACK's shutdown callback takes its own status type, which the header does not include.
struct JackCallbacks {
    static void Shutdown(jack_status_t code, const char* reason, void* self) noexcept {
        JackClient::Shutdown(static_cast<int>(code), reason, self);
    }
};

std::unique_ptr<JackClient> JackClient::Open(const Options& options, JackPeriodHandler& handler,
                                             std::string& error) {
    jack_set_error_function(&Quiet);
    jack_set_info_function(&Quiet);
    std::unique_ptr<JackClient> self(new JackClient(handler));
    jack_status_t status{};
    int flags = JackNoStartServer;
    if (!options.serverName.empty()) {
        flags |= JackServerName;
    }
    // A server that is there but busy may fail to answer in time; it gets two more chances.
    for (int attempt = 0; attempt < 3 && self->client_ == nullptr; ++attempt) {
        if (attempt > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
        }
        self->client_ = jack_client_open(options.clientName.c_str(),
                                         static_cast<jack_options_t>(flags), &status,
                                         options.serverName.c_str());
        if ((status & JackServerFailed) != 0) {
            break;
        }
    }
    if (self->client_ == nullptr) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%x", static_cast<unsigned>(status));
        error = (status & JackServerFailed) != 0
                    ? "no JACK server is running"
                    : std::string("the JACK server refused the client (status ") + code + ")";
        return nullptr;
    }
    jack_client_t* c = self->client_;
    self->input_ = jack_port_register(c, "input", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    self->midiOut_ = jack_port_register(c, "midi_out", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
    self->left_ = jack_port_register(c, "synth_left", JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput, 0);
    self->right_ = jack_port_register(c, "synth_right", JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput, 0);
    if (self->input_ == nullptr || self->midiOut_ == nullptr || self->left_ == nullptr ||
        self->right_ == nullptr) {
        error = "the JACK server refused Vocato's ports";
        return nullptr;
    }
    self->rate_ = jack_get_sample_rate(c);
    self->bufferSize_ = jack_get_buffer_size(c);
    jack_set_process_callback(c, &JackClient::Process, self.get());
    jack_set_sample_rate_callback(c, &JackClient::SampleRateChanged, self.get());
    jack_set_buffer_size_callback(c, &JackClient::BufferSizeChanged, self.get());
    jack_set_xrun_callback(c, &JackClient::Xrun, self.get());
    jack_on_info_shutdown(c, &JackCallbacks::Shutdown, self.get());
    return self;
}

JackClient::~JackClient() {
    if (client_ != nullptr) {
        // A client the server has dropped is closed all the same: that frees its side.
        jack_client_close(client_);
    }
}

bool JackClient::Activate(std::string& error) {
    if (jack_activate(client_) != 0) {
        error = "the JACK server would not start Vocato's process callback";
        return false;
    }
    return true;
}

std::string JackClient::ConnectSystemPorts() {
    std::string refused;
    const std::string capture = FirstPorts(client_, JackPortIsPhysical | JackPortIsOutput, 0);
    if (capture.empty() || jack_connect(client_, capture.c_str(), jack_port_name(input_)) != 0) {
        refused = "the input is not connected to a system capture port";
    }
    const char* ours[] = {jack_port_name(left_), jack_port_name(right_)};
    for (int i = 0; i < 2; ++i) {
        const std::string playback = FirstPorts(client_, JackPortIsPhysical | JackPortIsInput, i);
        if (playback.empty() || jack_connect(client_, ours[i], playback.c_str()) != 0) {
            refused += refused.empty() ? "" : "; ";
            refused += "the synthesizer is not connected to the system playback ports";
            break;
        }
    }
    return refused;
}

bool JackClient::ConnectMidiTo(const std::string& port) {
    jack_port_t* target = jack_port_by_name(client_, port.c_str());
    if (target == nullptr || (jack_port_flags(target) & JackPortIsInput) == 0 ||
        std::strcmp(jack_port_type(target), JACK_DEFAULT_MIDI_TYPE) != 0) {
        return false;
    }
    const int r = jack_connect(client_, jack_port_name(midiOut_), port.c_str());
    return r == 0 || r == EEXIST;
}

jack_port_t* JackClient::InputSource(const std::string& name) const {
    if (Lost()) {
        return nullptr;
    }
    jack_port_t* port = jack_port_by_name(client_, name.c_str());
    if (port == nullptr || jack_port_is_mine(client_, port) != 0 ||
        (jack_port_flags(port) & JackPortIsOutput) == 0 ||
        std::strcmp(jack_port_type(port), JACK_DEFAULT_AUDIO_TYPE) != 0) {
        return nullptr;
    }
    return port;
}

std::vector<std::string> JackClient::InputSources() const {
    if (Lost()) {
        return {};
    }
    const char** ports =
        jack_get_ports(client_, nullptr, JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput);
    if (ports == nullptr) {
        return {};
    }
    // Someone choosing what to sing into looks for the sound card first.
    std::vector<std::string> physical;
    std::vector<std::string> others;
    for (int i = 0; ports[i] != nullptr; ++i) {
        jack_port_t* port = jack_port_by_name(client_, ports[i]);
        if (port == nullptr || jack_port_is_mine(client_, port) != 0) {
            continue;
        }
        ((jack_port_flags(port) & JackPortIsPhysical) != 0 ? physical : others)
            .emplace_back(ports[i]);
    }
    jack_free(ports);
    physical.insert(physical.end(), others.begin(), others.end());
    return physical;
}

std::vector<std::string> JackClient::InputConnections() const {
    if (Lost()) {
        return {};
    }
    const char** ports = jack_port_get_connections(input_);
    if (ports == nullptr) {
        return {};
    }
    std::vector<std::string> names;
    for (int i = 0; ports[i] != nullptr; ++i) {
        names.emplace_back(ports[i]);
    }
    jack_free(ports);
    return names;
}

bool JackClient::ConnectInput(const std::string& source) {
    if (InputSource(source) == nullptr) {
        return false;
    }
    const int r = jack_connect(client_, source.c_str(), jack_port_name(input_));
    return r == 0 || r == EEXIST;
}

bool JackClient::DisconnectInput(const std::string& source) {
    if (InputSource(source) == nullptr) {
        return false;
    }
    return jack_port_connected_to(input_, source.c_str()) == 0 ||
           jack_disconnect(client_, source.c_str(), jack_port_name(input_)) == 0;
}

std::string JackClient::LostReason() const { return lostReason_; }

float JackClient::CpuLoad() const { return jack_cpu_load(client_); }

std::string JackClient::InputPortName() const { return PortName(input_); }
std::string JackClient::MidiPortName() const { return PortName(midiOut_); }
std::string JackClient::LeftPortName() const { return PortName(left_); }
std::string JackClient::RightPortName() const { return PortName(right_); }

int JackClient::Process(uint32_t frames, void* arg) noexcept {
    AudioThreadScope audio;
    auto* self = static_cast<JackClient*>(arg);
    JackPeriod period;
    period.input = static_cast<const float*>(jack_port_get_buffer(self->input_, frames));
    period.left = static_cast<float*>(jack_port_get_buffer(self->left_, frames));
    period.right = static_cast<float*>(jack_port_get_buffer(self->right_, frames));
    period.midiOut = jack_port_get_buffer(self->midiOut_, frames);
    period.frames = frames;
    jack_midi_clear_buffer(period.midiOut);
    self->handler_.Period(period);
    self->cycles_.fetch_add(1, std::memory_order_release);
    return 0;
}

int JackClient::SampleRateChanged(uint32_t rate, void* arg) noexcept {
    static_cast<JackClient*>(arg)->rate_.store(rate, std::memory_order_relaxed);
    return 0;
}

int JackClient::BufferSizeChanged(uint32_t frames, void* arg) noexcept {
    static_cast<JackClient*>(arg)->bufferSize_.store(frames, std::memory_order_relaxed);
    return 0;
}

int JackClient::Xrun(void* arg) noexcept {
    static_cast<JackClient*>(arg)->xruns_.fetch_add(1, std::memory_order_relaxed);
    return 0;
}

void JackClient::Shutdown(int, const char* reason, void* arg) noexcept {
    auto* self = static_cast<JackClient*>(arg);
    std::strncpy(self->lostReason_, reason != nullptr ? reason : "", sizeof self->lostReason_ - 1);
    self->lost_.store(true, std::memory_order_release);
}

} // namespace vocato::media
