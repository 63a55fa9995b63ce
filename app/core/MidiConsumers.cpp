#include "MidiConsumers.h"

namespace vocato {

std::vector<MidiConsumer> MidiConsumers() {
    std::unique_ptr<MidiInputDirectory> directories[] = {MakeJackMidiInputs(),
                                                         MakeAlsaMidiInputs()};
    std::vector<MidiConsumer> consumers;
    for (auto& directory : directories) {
        for (std::string& name : directory->InputNames()) {
            consumers.push_back({int32_t(consumers.size()) + 1, std::move(name)});
        }
    }
    return consumers;
}

} // namespace vocato
