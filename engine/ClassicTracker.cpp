// The specified engine behind the tracker interface.
#include "PitchTracker.h"

namespace vocato {
namespace {

class ClassicTracker final : public PitchTracker {
public:
    explicit ClassicTracker(WFETState* state) : state_(state) {}
    ~ClassicTracker() override { WFETEndProcess(state_); }
    ClassicTracker(const ClassicTracker&) = delete;
    ClassicTracker& operator=(const ClassicTracker&) = delete;

    int32_t Set(int16_t code, double value) noexcept override {
        return WFETSet(state_, code, value);
    }
    void Process(const int16_t* samples, uint32_t byteCount) noexcept override {
        WFETProcess(state_, samples, byteCount);
    }
    void Calc(WFETMidiOut* out) noexcept override { WFETCalc(state_, out); }

    // A note can start once the comparison has seen its reference and the configured number
    // of periods of the highest note, and the frame that follows has run.
    uint32_t DecisionDelaySamples() const noexcept override {
        const auto periods = static_cast<uint32_t>(state_->periods[0]);
        const auto shortest = static_cast<uint32_t>(state_->minPeriod[0]);
        return (periods + 1) * shortest + kWFETFrameSamples;
    }

private:
    WFETState* state_;
};

} // namespace

std::unique_ptr<PitchTracker> MakeClassicTracker() {
    WFETState* state = WFETBegProcess();
    if (state == nullptr) {
        return nullptr;
    }
    return std::make_unique<ClassicTracker>(state);
}

} // namespace vocato
