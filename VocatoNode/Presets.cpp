// Input presets: the settings blocks, and the engine rebuilt and fed in a fixed order.
#include "VocatoNode.h"

#include "Presets.h"
#include "Truncate.h"

namespace vocato {

void VocatoNode::PresetBaseInstrument(int kind) noexcept {
    if (kind < 0 || kind > 2) {
        return;
    }
    // Kind 1 (the basses) compares one period instead of two and widens the filters, whose
    // span is relative to the tracked range; kind 2 (guitars) bends further.
    fLevelMode = WFET_LEVEL_RELATIVE;
    fBendRange.store(kind == 2 ? 6.0f : 2.0f);
    fStartLevelDb.store(-27.0f);
    fHoldLevelDb.store(-40.0f);
    fStartDistance.store(0.2f);
    fHoldDistance.store(0.4f);
    fStartPeriods.store(kind == 1 ? 1.0f : 2.0f);
    fHoldPeriods.store(kind == 1 ? 1.0f : 2.0f);
    fLagWeight.store(0.1f);
    fFilterSpan.store(kind == 1 ? 2.0f : 1.0f);
    fContinuity.store(0.5f);
}

void VocatoNode::ChangePreset(int32_t preset) noexcept {
    if (preset >= 1 && preset <= kPresetCount) {
        const Preset& p = kPresets[static_cast<size_t>(preset - 1)];
        if (p.settings == PresetSettings::Voice) {
            fLevelMode = WFET_LEVEL_EXPRESSION;
            fBendRange.store(4.0f);
            fStartLevelDb.store(-24.0f);
            fHoldLevelDb.store(-36.0f);
            fStartDistance.store(0.1f);
            fHoldDistance.store(0.3f);
            fStartPeriods.store(2.0f);
            fHoldPeriods.store(2.0f);
            fLagWeight.store(0.1f);
            fFilterSpan.store(1.0f);
            fContinuity.store(0.1f);
        } else {
            PresetBaseInstrument(static_cast<int>(p.settings) - 1);
        }
        fMidiMin.store(p.midiMin);
        fMidiMax.store(p.midiMax);
    }
    RebuildEngine();
    SendExpression(fChannel, 127, NowMs());
    if (fWindow != nullptr) {
        fWindow->SetMidiMin(static_cast<float>(fMidiMin.load()));
        fWindow->SetMidiMax(static_cast<float>(fMidiMax.load()));
    }
    SendBendRange(1, static_cast<unsigned char>(TruncToward0<int32_t>(fBendRange.load())), NowMs());
}

void VocatoNode::SetEngineSwitches(int16_t median, int16_t confirm) noexcept {
    fMedian = median;
    fConfirm = confirm;
    if (fEngine != nullptr) {
        fEngine->Set(WFET_MEDIAN, fMedian);
        fEngine->Set(WFET_CONFIRM, fConfirm);
    }
}

uint32_t VocatoNode::DecisionDelaySamples() const noexcept {
    return fEngine != nullptr ? fEngine->DecisionDelaySamples() : 0;
}

void VocatoNode::RebuildEngine() noexcept {
    // A fresh tracker was built ahead of time; when none is ready (more changes than spares
    // since the last Maintain) the running one is fed again rather than allocating here.
    if (PitchTracker* fresh = fTrackers.Take()) {
        fTrackers.Retire(fEngine);
        fEngine = fresh;
    }
    if (fEngine == nullptr) {
        fEngineRateAccepted = false;
        return;
    }
    PitchTracker& e = *fEngine;
    // The filter span goes before the note range, which derives the filters from it.
    fEngineRateAccepted = e.Set(WFET_SAMPLE_RATE, fEngineRate) == WFET_ACCEPTED;
    e.Set(WFET_FILTER_SPAN, fFilterSpan.load());
    e.Set(WFET_MAX_NOTE, fMidiMax.load());
    e.Set(WFET_MIN_NOTE, fMidiMin.load());
    e.Set(WFET_BEND_RANGE, fBendRange.load());
    e.Set(WFET_START_LEVEL_DB, fStartLevelDb.load());
    e.Set(WFET_HOLD_LEVEL_DB, fHoldLevelDb.load());
    e.Set(WFET_START_DISTANCE, fStartDistance.load());
    e.Set(WFET_HOLD_DISTANCE, fHoldDistance.load());
    e.Set(WFET_LAG_WEIGHT, fLagWeight.load());
    e.Set(WFET_START_PERIODS, fStartPeriods.load());
    e.Set(WFET_HOLD_PERIODS, fHoldPeriods.load());
    e.Set(WFET_CONTINUITY, fContinuity.load());
    e.Set(WFET_MEDIAN, fMedian);
    e.Set(WFET_CONFIRM, fConfirm);
    e.Set(WFET_LEVEL_CEIL_DB, fLevelCeilDb.load());
    e.Set(WFET_LEVEL_MODE, fLevelMode);
}

} // namespace vocato
