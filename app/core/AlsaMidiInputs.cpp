#include "MidiConsumers.h"

#include <alsa/asoundlib.h>
#include <unistd.h>

namespace vocato {

namespace {

// Ports another program can write to and subscribe to are its MIDI inputs.
constexpr unsigned int kInputCapabilities = SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE;

class AlsaMidiInputs final : public MidiInputDirectory {
public:
    std::vector<std::string> InputNames() override {
        // Without the device, alsa-lib would only report an error; checking first
        // keeps machines without sound hardware quiet.
        snd_seq_t* seq = nullptr;
        if (::access("/dev/snd/seq", R_OK | W_OK) != 0 ||
            snd_seq_open(&seq, "default", SND_SEQ_OPEN_OUTPUT, SND_SEQ_NONBLOCK) < 0) {
            return {};
        }
        std::vector<std::string> names;
        snd_seq_client_info_t* client = nullptr;
        snd_seq_port_info_t* port = nullptr;
        snd_seq_client_info_alloca(&client);
        snd_seq_port_info_alloca(&port);
        snd_seq_client_info_set_client(client, -1);
        while (snd_seq_query_next_client(seq, client) >= 0) {
            snd_seq_port_info_set_client(port, snd_seq_client_info_get_client(client));
            snd_seq_port_info_set_port(port, -1);
            while (snd_seq_query_next_port(seq, port) >= 0) {
                if ((snd_seq_port_info_get_capability(port) & kInputCapabilities) ==
                    kInputCapabilities) {
                    names.push_back(std::string(snd_seq_client_info_get_name(client)) + ":" +
                                    snd_seq_port_info_get_name(port));
                }
            }
        }
        snd_seq_close(seq);
        return names;
    }
};

} // namespace

std::unique_ptr<MidiInputDirectory> MakeAlsaMidiInputs() {
    return std::make_unique<AlsaMidiInputs>();
}

} // namespace vocato
