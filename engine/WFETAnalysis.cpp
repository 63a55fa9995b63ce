// Sample intake and the pitch analysis of one frame: extrema of the band-limited signal, a
// prominent reference extremum, and the earlier extremum whose preceding pattern matches the
// reference's best.
#include "WFET.h"

#include "SafeConvert.h"

#include <cmath>
#include <cstdlib>

using vocato::engine_detail::ClampToInt;

namespace {

constexpr uint32_t kRingMask = kWFETRingSize - 1;
// How many records behind the newest one get a fresh force each frame, and how many of the
// newest candidates may become the reference.
constexpr int kForceDepth = 99;
constexpr int kReferenceDepth = 7;
// The search looks at records 2, 4, ... places before the reference: up to 100 places back.
constexpr int kMaxCandidates = 50;
// Lags are written for the reference and the 100 records behind it, one more than the forces,
// so that the farthest candidate (100 places back) is measured against the current reference
// rather than carrying a lag left over from an earlier frame.
constexpr int kLagDepth = 2 * kMaxCandidates;

inline uint32_t Back(uint32_t index, uint32_t places) { return (index - places) & kRingMask; }

void RecordExtremum(WFETState* s, uint16_t kind, double y) {
    const double previousValue = s->extrema[s->head].value;
    s->head = (s->head + 1) & kRingMask;
    WFETExtremum& e = s->extrema[s->head];
    e.kind = kind;
    // An interval only exceeds 2^31 samples after half a day without a turn in the signal.
    e.interval = ClampToInt<int32_t>(s->sinceLast);
    e.value = s->prev1;
    e.before = s->prev2;
    e.after = y;
    e.swing = std::fabs(previousValue - s->prev1);
    s->sinceLast = 0;
}

} // namespace

void WFETProcess(WFETState* s, const int16_t* samples, uint32_t byteCount) {
    const uint32_t count = byteCount / 2;
    for (uint32_t i = 0; i < count; ++i) {
        const double x = samples[i];
        const double ax = std::fabs(x);
        // Instant attack, decay by 1023/1024 per sample.
        s->inputLevel = s->inputLevel < ax ? ax : (ax + 1023 * s->inputLevel) / 1024;

        const double y = TiaRBiquadFloat_ProcessSample(
            s->lowPass, TiaRBiquadFloat_ProcessSample(s->highPass, x));

        const double ay = std::fabs(y);
        s->peakEnv = s->peakEnv < ay ? ay : (4088 * s->peakEnv + 8 * ay) / 4096;
        s->slowEnv = (8 * s->peakEnv + 4088 * s->slowEnv) / 4096;

        // A maximum ends a rise or a level stretch, a minimum ends a fall, so the two kinds
        // strictly alternate in the ring.
        if (s->prev1 >= s->prev2 && s->prev1 > y) {
            RecordExtremum(s, 1, y);
        } else if (s->prev1 < s->prev2 && s->prev1 <= y) {
            RecordExtremum(s, 0, y);
        }
        s->prev2 = s->prev1;
        s->prev1 = y;
        ++s->sinceLast;
    }
    s->samplesSinceCalc = ClampToInt<int32_t>(int64_t{s->samplesSinceCalc} + count);
}

void WFETForces(WFETState* s) {
    for (int k = 1; k <= kForceDepth; ++k) {
        WFETExtremum& e = s->extrema[Back(s->head, k)];
        const double nextSwing = s->extrema[Back(s->head, k - 1)].swing;
        e.force = e.swing < nextSwing ? e.swing : nextSwing;
    }
}

int32_t WFETRef(WFETState* s) {
    int32_t ref = -1;
    double best = 0;
    // Newest first and a strict comparison: on a tie the newer record wins.
    for (int k = 1; k <= kReferenceDepth; ++k) {
        const uint32_t index = Back(s->head, k);
        if (s->extrema[index].force > best) {
            best = s->extrema[index].force;
            ref = static_cast<int32_t>(index);
        }
    }
    return ref;
}

void WFETTimeLags(WFETState* s, uint32_t ref) {
    s->extrema[ref].lag = 0;
    int64_t sum = 0;
    for (int k = 1; k <= kLagDepth; ++k) {
        sum += s->extrema[Back(ref, k - 1)].interval;
        s->extrema[Back(ref, k)].lag = ClampToInt<int32_t>(-sum);
    }
}

int32_t WFETCopy(WFETState* s, WFETMergeEntry* list, uint32_t ref, uint32_t cand) {
    const int m = s->sounding;
    const int64_t limit = int64_t{s->extrema[cand].lag} * s->periods[m];
    uint32_t a = ref;
    uint32_t b = cand;
    int64_t ta = 0;
    int64_t tb = 0;
    int k = 0;
    // Both sequences are walked newest first in order of relative time; the list always
    // holds at least four entries and an even number of them.
    while (k < kWFETMergeSize && ((ta >= limit && tb >= limit) || (k % 2) == 1 || k <= 2)) {
        const bool fromReference = ta >= tb;
        const WFETExtremum& e = s->extrema[fromReference ? a : b];
        WFETMergeEntry& entry = list[k];
        entry.kind = e.kind;
        entry.stream = fromReference ? 0 : 1;
        entry.time = ClampToInt<int32_t>(fromReference ? ta : tb);
        entry.force = e.force;
        entry.value = e.value;
        if (fromReference) {
            ta -= e.interval;
            a = Back(a, 1);
        } else {
            tb -= e.interval;
            b = Back(b, 1);
        }
        ++k;
    }
    return k - 1;
}

double WFETDistCalc(WFETState* s, const WFETMergeEntry* list, int32_t count, uint32_t lag,
                    double envelope) {
    const double penalty = s->mismatchPenalty[s->sounding];
    double A = 0;
    double T = 0;
    for (int32_t j = 0; 2 * j < count; ++j) {
        const WFETMergeEntry& first = list[2 * j];
        const WFETMergeEntry& second = list[2 * j + 1];
        if (first.stream != second.stream) {
            A = A + std::fabs(first.value - second.value);
            T = T + std::fabs(static_cast<double>(first.time) - second.time);
        } else {
            // One sequence has an extremum the other lacks: charge its prominence.
            A = A + (first.force + second.force) * penalty;
        }
    }
    const int64_t norm = (int64_t{lag} + 1) * count;
    return A / envelope / count + T / static_cast<double>(norm);
}

double WFETInterpol(const WFETExtremum* e) {
    const double p = e->before;
    const double v = e->value;
    const double q = e->after;
    const double denominator = 2 * (p - 2 * v + q);
    return denominator == 0 ? 0 : (p - q) / denominator;
}

namespace {

// Adds the penalty for leaving the period of the previous voiced frame; it fades with the
// time since that frame, so a real change of pitch is not held back for long.
double ContinuityPenalty(const WFETState* s, int64_t lag) {
    if (s->voiced == 1 && s->period > 0 && s->samplesSinceCalc > 0) {
        return std::fabs(1 - lag / s->period) * s->continuityWeight / s->samplesSinceCalc;
    }
    return 0;
}

} // namespace

void WFETCalc(WFETState* s, WFETMidiOut* out) {
    WFETForces(s);
    const int32_t ref = WFETRef(s);
    if (ref < 0) {
        s->distance = kWFETNoDistance;
        WFETMIDI(s, out);
        return;
    }
    const auto r = static_cast<uint32_t>(ref);
    WFETTimeLags(s, r);

    const int m = s->sounding;
    const double tolerance = s->ampTolerance[m] * s->slowEnv;
    const int64_t shortest = s->minPeriod[m];
    const int64_t longest = s->maxPeriod[m];
    const double weight = s->lagWeight[m];
    const WFETExtremum& reference = s->extrema[r];

    double bestScore = kWFETNoDistance;
    double bestDistance = kWFETNoDistance;
    int64_t bestLag = 0;
    const WFETExtremum* best = nullptr;
    WFETMergeEntry list[kWFETMergeSize];

    for (int j = 1; j <= kMaxCandidates; ++j) {
        const uint32_t c = Back(r, 2 * j);
        const WFETExtremum& candidate = s->extrema[c];
        const int64_t lag = -int64_t{candidate.lag};
        if (lag > longest) {
            break;
        }
        if (!(std::fabs(reference.value - candidate.value) < tolerance) || lag < shortest) {
            continue;
        }
        const int32_t n = WFETCopy(s, list, r, c);
        const double d = WFETDistCalc(s, list, n, static_cast<uint32_t>(lag), s->peakEnv);
        const double score = d + weight * lag + ContinuityPenalty(s, lag);
        // Strict: on a tie the nearer candidate stays.
        if (score < bestScore) {
            bestScore = score;
            bestDistance = d;
            bestLag = lag;
            best = &candidate;
        }
    }

    if (best != nullptr) {
        s->frequency =
            s->sampleRate / (bestLag - WFETInterpol(best) + WFETInterpol(&reference));
        s->period = static_cast<double>(bestLag);
    }
    s->distance = bestDistance;
    WFETMIDI(s, out);
    s->samplesSinceCalc = 0;
}
