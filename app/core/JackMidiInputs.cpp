#include "MidiConsumers.h"

#include <jack/jack.h>

namespace vocato {

namespace {

class JackMidiInputs final : public MidiInputDirectory {
public:
    std::vector<std::string> InputNames() override {
        // JackNoStartServer: listing ports must never launch a server as a side effect.
        jack_status_t status{};
        jack_client_t* client =
            jack_client_open("vocato-port-list", JackOptions(JackNoStartServer), &status);
        if (client == nullptr) {
            return {};
        }
        std::vector<std::string> names;
        const char** ports =
            jack_get_ports(client, nullptr, JACK_DEFAULT_MIDI_TYPE, JackPortIsInput);
        for (const char** port = ports; port != nullptr && *port != nullptr; ++port) {
            names.emplace_back(*port);
        }
        jack_free(ports);
        jack_client_close(client);
        return names;
    }
};

} // namespace

std::unique_ptr<MidiInputDirectory> MakeJackMidiInputs() {
    return std::make_unique<JackMidiInputs>();
}

} // namespace vocato
