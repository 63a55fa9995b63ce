// The note decision at the end of every frame: voiced or not (with stricter thresholds for
// starting a note than for keeping one), which note, re-triggers, bend, velocity, expression.
#include "WFET.h"

#include "SafeConvert.h"

#include <algorithm>
#include <cmath>

using vocato::TruncToward0;

namespace {

double MedianOfThree(double a, double b, double c) {
    return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

double DecisionFrequency(WFETState* s) {
    if (s->medianOn != 1) {
        return s->frequency;
    }
    // One stray frame (an octave jump, a frame without a period) does not move the decision.
    s->freqHistory[2] = s->freqHistory[1];
    s->freqHistory[1] = s->freqHistory[0];
    s->freqHistory[0] = s->frequency;
    return MedianOfThree(s->freqHistory[0], s->freqHistory[1], s->freqHistory[2]);
}

// The input level mapped between the floor and the ceiling onto 0..127.
int16_t LevelValue(const WFETState* s) {
    if (!(s->inputLevel > 1e-20)) {
        return 0;
    }
    const double db = 20 * std::log10(s->inputLevel * 3.0517578125e-05); // relative to 32768
    const double level =
        127 * (1 - (s->levelCeilDb - db) / (s->levelCeilDb - s->levelFloorDb));
    return static_cast<int16_t>(std::clamp(TruncToward0<int32_t>(level), 0, 127));
}

void StartNote(WFETState* s, WFETMidiOut* out, int16_t nearest, int16_t level) {
    s->sounding = 1;
    s->note = nearest;
    out->noteOn = nearest;
    switch (s->levelMode) {
    case WFET_LEVEL_VELOCITY:
        out->velocity = level;
        out->expression = 127;
        break;
    case WFET_LEVEL_RELATIVE:
        out->velocity = level;
        out->expression = 96;
        break;
    case WFET_LEVEL_EXPRESSION:
        out->velocity = 127;
        out->expression = level;
        break;
    default:
        break;
    }
    s->noteVelocity = out->velocity;
    // While the note sounds the period search stays within the bend range of the period that
    // started it: a wider jump must come from a fresh start, not from a drift of the search.
    s->maxPeriod[1] = TruncToward0<int32_t>(std::pow(2.0, s->bendRange / 12.0) * s->period);
    s->minPeriod[1] = TruncToward0<int32_t>(std::pow(2.0, -s->bendRange / 12.0) * s->period);
}

void ContinueNote(WFETState* s, WFETMidiOut* out, int16_t level) {
    out->velocity = s->noteVelocity;
    switch (s->levelMode) {
    case WFET_LEVEL_VELOCITY:
        out->expression = 127;
        break;
    case WFET_LEVEL_RELATIVE:
        // Relative to the attack; a very soft attack would make the ratio meaningless.
        out->expression =
            s->noteVelocity <= 10 ? 127 : static_cast<int16_t>(level * 96 / s->noteVelocity);
        break;
    case WFET_LEVEL_EXPRESSION:
        out->expression = level;
        break;
    default:
        break;
    }
}

void ClampOutputs(WFETMidiOut* out) {
    out->bend = std::clamp<int16_t>(out->bend, 0, 16383);
    out->expression = std::clamp<int16_t>(out->expression, 0, 127);
    out->velocity = std::clamp<int16_t>(out->velocity, 0, 127);
}

} // namespace

void WFETMIDI(WFETState* s, WFETMidiOut* out) {
    out->noteOff = -1;
    out->noteOn = -1;
    s->decisionFreq = DecisionFrequency(s);

    s->prevVoiced = s->voiced;
    const int m = s->sounding;
    s->voiced = (s->distance < s->maxDistance[m] && s->minLevel[m] < s->inputLevel &&
                 0 < s->decisionFreq)
                    ? 1
                    : 0;

    // With confirmation on, the first voiced frame only arms the next one.
    if (s->voiced == 0 || (s->confirmOn == 1 && s->prevVoiced != 1)) {
        s->frequency = -1;
        if (s->sounding == 1) {
            out->noteOff = s->note;
            s->sounding = 0;
        }
        ClampOutputs(out);
        return;
    }

    // Note numbers are not limited to 0..127 here: the caller adds its transposition and
    // decides what to do with numbers MIDI cannot carry. While a note sounds its search spans only the bend
    // range, so a re-trigger may leave the configured note range; the filters still attenuate
    // what lies outside it.
    const double pitch = 69 + 12 * std::log(s->decisionFreq / s->refPitch) / std::log(2.0);
    int32_t nearest = TruncToward0<int32_t>(pitch + 0.5);
    if (nearest < 0) {
        nearest = -nearest;
    }
    const auto nearestNote = static_cast<int16_t>(std::min(nearest, 32767));
    const int16_t level = LevelValue(s);

    if (s->sounding == 0) {
        StartNote(s, out, nearestNote, level);
    } else {
        ContinueNote(s, out, level);
    }

    double deviation = pitch - s->note;
    // Beyond the bend range the bend cannot express the pitch: end the note, start the
    // nearest one at full velocity.
    if (std::fabs(deviation) > s->bendRange) {
        out->noteOff = s->note;
        s->note = nearestNote;
        out->noteOn = nearestNote;
        out->velocity = 127;
        deviation = pitch - s->note;
    }
    out->bend = static_cast<int16_t>(
        std::clamp(TruncToward0<int32_t>(deviation * 8191 / s->bendRange + 8192), 0, 16383));
    ClampOutputs(out);
}
