#include "AlsaSequencerOutput.h"

#include <alsa/asoundlib.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>

namespace vocato::media {
namespace {

// alsa-lib prints its own complaints to standard error; ours say the same once, in words.
void Quiet(const char*, int, const char*, int, const char*, ...) {}

// "client:port" with numbers, or a client or port name.
bool FindPort(snd_seq_t* seq, const std::string& target, int& client, int& port) {
    char* end = nullptr;
    const long c = std::strtol(target.c_str(), &end, 10);
    if (end != target.c_str() && *end == ':') {
        client = static_cast<int>(c);
        port = std::atoi(end + 1);
        return true;
    }
    snd_seq_client_info_t* ci = nullptr;
    snd_seq_port_info_t* pi = nullptr;
    snd_seq_client_info_alloca(&ci);
    snd_seq_port_info_alloca(&pi);
    snd_seq_client_info_set_client(ci, -1);
    while (snd_seq_query_next_client(seq, ci) >= 0) {
        const int id = snd_seq_client_info_get_client(ci);
        snd_seq_port_info_set_client(pi, id);
        snd_seq_port_info_set_port(pi, -1);
        while (snd_seq_query_next_port(seq, pi) >= 0) {
            const unsigned caps = snd_seq_port_info_get_capability(pi);
            const bool writable = (caps & SND_SEQ_PORT_CAP_SUBS_WRITE) != 0;
            if (writable && (target == snd_seq_port_info_get_name(pi) ||
                             target == snd_seq_client_info_get_name(ci))) {
                client = id;
                port = snd_seq_port_info_get_port(pi);
                return true;
            }
        }
    }
    return false;
}

} // namespace

std::unique_ptr<AlsaSequencerOutput> AlsaSequencerOutput::Open(const std::string& portName,
                                                               std::string& error) {
    snd_lib_error_set_handler(&Quiet);
    snd_seq_t* seq = nullptr;
    int err = snd_seq_open(&seq, "default", SND_SEQ_OPEN_OUTPUT, 0);
    if (err < 0) {
        error = std::string("the system has no ALSA sequencer (") + snd_strerror(err) + ")";
        return nullptr;
    }
    snd_seq_set_client_name(seq, portName.c_str());
    const int port = snd_seq_create_simple_port(
        seq, portName.c_str(), SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ,
        SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_APPLICATION);
    snd_midi_event_t* encoder = nullptr;
    if (port < 0 || snd_midi_event_new(16, &encoder) < 0) {
        error = std::string("the ALSA sequencer refused the port (") + snd_strerror(port) + ")";
        snd_seq_close(seq);
        return nullptr;
    }
    return std::unique_ptr<AlsaSequencerOutput>(new AlsaSequencerOutput(seq, port, encoder));
}

AlsaSequencerOutput::AlsaSequencerOutput(snd_seq_t* seq, int port, snd_midi_event_t* encoder)
    : seq_(seq), port_(port), encoder_(encoder) {
    sem_init(&pending_, 0, 0);
    thread_ = std::thread(&AlsaSequencerOutput::Run, this);
}

AlsaSequencerOutput::~AlsaSequencerOutput() {
    stop_ = true;
    sem_post(&pending_);
    thread_.join();
    sem_destroy(&pending_);
    snd_midi_event_free(encoder_);
    snd_seq_close(seq_);
}

void AlsaSequencerOutput::Send(const MidiMessage& message, uint32_t) noexcept {
    if (!queue_.TryPush(message)) {
        dropped_.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    sem_post(&pending_); // never blocks: it only wakes the sender
}

bool AlsaSequencerOutput::ConnectTo(const std::string& target) {
    int client = 0;
    int port = 0;
    return FindPort(seq_, target, client, port) &&
           snd_seq_connect_to(seq_, port_, client, port) >= 0;
}

void AlsaSequencerOutput::Run() {
    while (!stop_.load(std::memory_order_acquire)) {
        if (sem_wait(&pending_) != 0 && errno == EINTR) {
            continue;
        }
        MidiMessage message;
        while (queue_.TryPop(message)) {
            snd_seq_event_t event;
            snd_seq_ev_clear(&event);
            snd_midi_event_reset_encode(encoder_);
            if (snd_midi_event_encode(encoder_, message.bytes, message.size, &event) <= 0 ||
                event.type == SND_SEQ_EVENT_NONE) {
                continue;
            }
            snd_seq_ev_set_source(&event, port_);
            snd_seq_ev_set_subs(&event);
            snd_seq_ev_set_direct(&event);
            snd_seq_event_output_direct(seq_, &event);
        }
    }
}

} // namespace vocato::media
