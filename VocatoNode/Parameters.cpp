// The sixteen parameters: queued on any thread, applied on the node thread when due.
#include "VocatoNode.h"

#include "Truncate.h"

#include <cstring>
#include <utility>

namespace vocato {
namespace {

// The engine code each tuning value feeds; transposition, preset and program have none.
constexpr std::pair<int32_t, int16_t> kEngineCodes[] = {
    {PARAM_START_DISTANCE, WFET_START_DISTANCE},
    {PARAM_HOLD_DISTANCE, WFET_HOLD_DISTANCE},
    {PARAM_START_LEVEL_DB, WFET_START_LEVEL_DB},
    {PARAM_HOLD_LEVEL_DB, WFET_HOLD_LEVEL_DB},
    {PARAM_BEND_RANGE, WFET_BEND_RANGE},
    {PARAM_START_PERIODS, WFET_START_PERIODS},
    {PARAM_HOLD_PERIODS, WFET_HOLD_PERIODS},
    {PARAM_LAG_WEIGHT, WFET_LAG_WEIGHT},
    {PARAM_FILTER_SPAN, WFET_FILTER_SPAN},
    {PARAM_CONTINUITY, WFET_CONTINUITY},
    {PARAM_LEVEL_CEIL_DB, WFET_LEVEL_CEIL_DB},
    {PARAM_MIDI_MIN, WFET_MIN_NOTE},
    {PARAM_MIDI_MAX, WFET_MAX_NOTE},
};

int16_t EngineCode(int32_t id) noexcept {
    for (const auto& [param, code] : kEngineCodes) {
        if (param == id) {
            return code;
        }
    }
    return -1;
}

} // namespace

template <typename Self> auto* VocatoNode::FloatField(Self& self, int32_t id) noexcept {
    using Field = decltype(&self.fTranspose);
    switch (id) {
    case PARAM_START_DISTANCE:
        return &self.fStartDistance;
    case PARAM_HOLD_DISTANCE:
        return &self.fHoldDistance;
    case PARAM_START_LEVEL_DB:
        return &self.fStartLevelDb;
    case PARAM_HOLD_LEVEL_DB:
        return &self.fHoldLevelDb;
    case PARAM_BEND_RANGE:
        return &self.fBendRange;
    case PARAM_TRANSPOSE:
        return &self.fTranspose;
    case PARAM_START_PERIODS:
        return &self.fStartPeriods;
    case PARAM_HOLD_PERIODS:
        return &self.fHoldPeriods;
    case PARAM_LAG_WEIGHT:
        return &self.fLagWeight;
    case PARAM_FILTER_SPAN:
        return &self.fFilterSpan;
    case PARAM_CONTINUITY:
        return &self.fContinuity;
    case PARAM_LEVEL_CEIL_DB:
        return &self.fLevelCeilDb;
    default:
        return static_cast<Field>(nullptr);
    }
}

template <typename Self> auto* VocatoNode::IntField(Self& self, int32_t id) noexcept {
    using Field = decltype(&self.fPreset);
    switch (id) {
    case PARAM_PRESET:
        return &self.fPreset;
    case PARAM_MIDI_MIN:
        return &self.fMidiMin;
    case PARAM_MIDI_MAX:
        return &self.fMidiMax;
    case PARAM_PROGRAM:
        return &self.fProgram;
    default:
        return static_cast<Field>(nullptr);
    }
}

void VocatoNode::SetParameterValue(int32_t id, int64_t when, const void* value,
                                   size_t size) noexcept {
    if (ParameterIndex(id) < 0 || size < 4) {
        return;
    }
    media::TimedEvent event;
    event.time = when;
    event.type = media::EventType::Parameter;
    event.id = id;
    std::memcpy(event.value, value, 4);
    fEvents.Push(event);
}

media::Status VocatoNode::GetParameterValue(int32_t id, int64_t* lastChange, void* value,
                                            size_t* ioSize) const noexcept {
    if (*ioSize < 4) {
        return media::kNoMemory;
    }
    const int index = ParameterIndex(id);
    if (index < 0) {
        return media::kError;
    }
    if (const auto* field = FloatField(*this, id)) {
        const float v = field->load(std::memory_order_relaxed);
        std::memcpy(value, &v, 4);
    } else if (id == PARAM_MIDI_MIN || id == PARAM_MIDI_MAX) {
        const auto v = static_cast<float>(IntField(*this, id)->load(std::memory_order_relaxed));
        std::memcpy(value, &v, 4);
    } else {
        const int32_t v = IntField(*this, id)->load(std::memory_order_relaxed);
        std::memcpy(value, &v, 4);
    }
    *lastChange = fLastChange[static_cast<size_t>(index)].load(std::memory_order_relaxed);
    *ioSize = 4;
    return media::kOk;
}

void VocatoNode::SetLastChange(int32_t id, int64_t when) noexcept {
    fLastChange[static_cast<size_t>(ParameterIndex(id))].store(when, std::memory_order_relaxed);
}

void VocatoNode::Broadcast(int64_t when, int32_t id, const void* value) noexcept {
    for (ParameterListener* listener : fListeners) {
        if (listener != nullptr) {
            listener->ParameterChanged(when, id, value, 4);
        }
    }
}

void VocatoNode::ApplyParameterData(const void* data, size_t size) noexcept {
    // Records of an int32 id followed by its 4 value bytes, applied as if set just now.
    const auto* bytes = static_cast<const uint8_t*>(data);
    for (size_t at = 0; at + 8 <= size; at += 8) {
        int32_t id;
        std::memcpy(&id, bytes + at, 4);
        SetParameterValue(id, NowMicros(), bytes + at + 4, 4);
    }
}

void VocatoNode::handleParameterEvent(const media::TimedEvent& event) noexcept {
    const int32_t id = event.id;
    const int64_t now = NowMicros();
    float asFloat;
    int32_t asInt;
    std::memcpy(&asFloat, event.value, 4);
    std::memcpy(&asInt, event.value, 4);

    switch (id) {
    case PARAM_TRANSPOSE:
        if (asFloat == fTranspose.load()) {
            return;
        }
        fTranspose.store(asFloat);
        SetLastChange(id, now);
        SendAllNotesOff(true);
        SendExpression(fChannel, 127, NowMs());
        if (fWindow != nullptr) {
            fWindow->SetTranspose(asFloat);
        }
        Broadcast(now, id, &asFloat);
        return;
    case PARAM_PRESET: {
        if (asInt == fPreset.load()) {
            return;
        }
        fPreset.store(asInt);
        ChangePreset(asInt);
        SetLastChange(id, now);
        Broadcast(now, id, &asInt);
        const float range = fBendRange.load();
        const auto low = static_cast<float>(fMidiMin.load());
        const auto high = static_cast<float>(fMidiMax.load());
        Broadcast(now, PARAM_BEND_RANGE, &range);
        Broadcast(now, PARAM_MIDI_MIN, &low);
        Broadcast(now, PARAM_MIDI_MAX, &high);
        for (int32_t tuning : {PARAM_START_LEVEL_DB, PARAM_HOLD_LEVEL_DB, PARAM_START_DISTANCE,
                               PARAM_HOLD_DISTANCE, PARAM_START_PERIODS, PARAM_HOLD_PERIODS,
                               PARAM_LAG_WEIGHT, PARAM_CONTINUITY, PARAM_LEVEL_CEIL_DB}) {
            const float v = FloatField(*this, tuning)->load();
            Broadcast(now, tuning, &v);
        }
        return;
    }
    case PARAM_MIDI_MIN:
    case PARAM_MIDI_MAX: {
        const int32_t note = TruncToward0<int32_t>(asFloat);
        std::atomic<int32_t>& field = *IntField(*this, id);
        if (note == field.load()) {
            return;
        }
        field.store(note);
        SetLastChange(id, now);
        if (fEngine != nullptr) {
            fEngine->Set(EngineCode(id), note);
        }
        if (fWindow != nullptr) {
            if (id == PARAM_MIDI_MIN) {
                fWindow->SetMidiMin(static_cast<float>(note));
            } else {
                fWindow->SetMidiMax(static_cast<float>(note));
            }
        }
        Broadcast(now, id, &asFloat);
        return;
    }
    case PARAM_PROGRAM:
        if (asInt == fProgram.load()) {
            return;
        }
        fProgram.store(asInt);
        SendProgramChange(1, static_cast<short>(asInt), NowMs());
        SetLastChange(id, now);
        Broadcast(now, id, &asInt);
        return;
    default:
        break;
    }

    std::atomic<float>* field = FloatField(*this, id);
    if (field == nullptr || asFloat == field->load()) {
        return;
    }
    field->store(asFloat);
    SetLastChange(id, now);
    if (fEngine != nullptr) {
        fEngine->Set(EngineCode(id), asFloat);
    }
    if (id == PARAM_BEND_RANGE) {
        SendBendRange(1, static_cast<unsigned char>(TruncToward0<int32_t>(asFloat)), NowMs());
    }
    Broadcast(now, id, &asFloat);
}

} // namespace vocato
