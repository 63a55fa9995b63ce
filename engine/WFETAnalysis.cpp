// Sample intake and the pitch analysis of one frame: extrema of the band-limited signal, a
// prominent reference extremum, and the earlier extremum whose preceding pattern matches the
// reference's best.
#include "WFET.h"

#include "SafeConvert.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

using vocato::ClampToInt;

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

// Intervals are capped at 2^24 samples (six minutes at 44.1 kHz without a single turn of the
// signal, far beyond any period): the sum of the hundred intervals that a lag or a merged
// list adds up then always fits in 32 bits.
constexpr uint32_t kMaxInterval = 1u << 24;

inline uint32_t Back(uint32_t index, uint32_t places) { return (index - places) & kRingMask; }

void RecordExtremum(WFETState* s, uint16_t kind, double y) {
    const double previousValue = s->extrema[s->head].value;
    s->head = (s->head + 1) & kRingMask;
    WFETExtremum& e = s->extrema[s->head];
    e.kind = kind;
    e.interval = static_cast<int32_t>(std::min(s->sinceLast, kMaxInterval));
    e.value = s->prev1;
    e.before = s->prev2;
    e.after = y;
    e.swing = std::fabs(previousValue - s->prev1);
    s->sinceLast = 0;
    ++s->extremaWritten;
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
    int32_t sum = 0;
    for (int k = 1; k <= kLagDepth; ++k) {
        sum += s->extrema[Back(ref, k - 1)].interval;
        s->extrema[Back(ref, k)].lag = -sum;
    }
}

namespace {

// Walks the sequences behind the reference and behind a candidate, newest first, in order of
// relative time (the reference's first on equal times). It yields at least four entries and
// always an even number, and stops once either sequence has run past `periods` times the
// candidate's lag.
class MergeWalker {
public:
    MergeWalker(const WFETState* s, uint32_t ref, uint32_t cand)
        : s_(s), a_(ref), b_(cand),
          limit_(int64_t{s->extrema[cand].lag} * s->periods[s->sounding]) {}

    bool HasNext() const {
        return k_ < kWFETMergeSize && ((ta_ >= limit_ && tb_ >= limit_) || (k_ % 2) == 1 || k_ <= 2);
    }

    void Next(WFETMergeEntry& entry) {
        const bool fromReference = ta_ >= tb_;
        const WFETExtremum& e = s_->extrema[fromReference ? a_ : b_];
        entry.kind = e.kind;
        entry.stream = fromReference ? 0 : 1;
        entry.time = fromReference ? ta_ : tb_;
        entry.force = e.force;
        entry.value = e.value;
        if (fromReference) {
            ta_ -= e.interval;
            a_ = Back(a_, 1);
        } else {
            tb_ -= e.interval;
            b_ = Back(b_, 1);
        }
        ++k_;
    }

    int32_t Count() const { return k_; }

private:
    const WFETState* s_;
    uint32_t a_;
    uint32_t b_;
    int64_t limit_;
    int32_t ta_ = 0;
    int32_t tb_ = 0;
    int32_t k_ = 0;
};

struct ShapeSums {
    double A = 0; // value differences and the cost of unpaired extrema
    double T = 0; // time differences
};

void AddPair(const WFETMergeEntry& first, const WFETMergeEntry& second, double penalty,
             ShapeSums& sums) {
    if (first.stream != second.stream) {
        sums.A = sums.A + std::fabs(first.value - second.value);
        sums.T = sums.T + std::fabs(static_cast<double>(first.time) - second.time);
    } else {
        // One sequence has an extremum the other lacks: charge its prominence.
        sums.A = sums.A + (first.force + second.force) * penalty;
    }
}

// Normalised by the envelope and by the lag, so that a perfect repetition scores 0.
double ShapeDistance(const ShapeSums& sums, int32_t count, int64_t lag, double envelope) {
    const int64_t norm = (lag + 1) * count;
    return sums.A / envelope / count + sums.T / static_cast<double>(norm);
}

} // namespace

int32_t WFETCopy(WFETState* s, WFETMergeEntry* list, uint32_t ref, uint32_t cand) {
    MergeWalker walker(s, ref, cand);
    while (walker.HasNext()) {
        walker.Next(list[walker.Count()]);
    }
    return walker.Count() - 1;
}

double WFETDistCalc(WFETState* s, const WFETMergeEntry* list, int32_t count, uint32_t lag,
                    double envelope) {
    const double penalty = s->mismatchPenalty[s->sounding];
    ShapeSums sums;
    for (int32_t j = 0; 2 * j < count; ++j) {
        AddPair(list[2 * j], list[2 * j + 1], penalty, sums);
    }
    return ShapeDistance(sums, count, lag, envelope);
}

namespace {

// WFETCopy followed by WFETDistCalc, fused, with the same additions in the same order, so the
// distance is identical to the last bit. It gives up early, returning infinity, once even the
// smallest distance the finished comparison could reach, plus `extra`, cannot beat `bestScore`:
// the sums only grow and the entry count is at most one hundred. The margin keeps rounding
// from ever discarding a candidate that would have won.
double CandidateDistance(const WFETState* s, uint32_t ref, uint32_t cand, int64_t lag,
                         double extra, double bestScore) {
    const double envelope = s->peakEnv;
    const double penalty = s->mismatchPenalty[s->sounding];
    const bool canGiveUp = envelope > 0 && std::isfinite(envelope) && std::isfinite(bestScore);
    const double maxCount = kWFETMergeSize - 1;
    const double lagNorm = static_cast<double>(lag + 1) * maxCount;
    MergeWalker walker(s, ref, cand);
    ShapeSums sums;
    WFETMergeEntry first;
    WFETMergeEntry second;
    while (walker.HasNext()) {
        walker.Next(first);
        walker.Next(second);
        AddPair(first, second, penalty, sums);
        if (canGiveUp) {
            const double floor = sums.A / envelope / maxCount + sums.T / lagNorm + extra;
            if (floor * (1 - 1e-9) >= bestScore) {
                return std::numeric_limits<double>::infinity();
            }
        }
    }
    return ShapeDistance(sums, walker.Count() - 1, lag, envelope);
}

} // namespace

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
    // Forces and lags depend only on the ring (and the lags on the reference): a frame with no
    // new extremum, as in silence, reuses what the previous frame wrote.
    if (s->forcesAt != s->extremaWritten) {
        WFETForces(s);
        s->forcesAt = s->extremaWritten;
    }
    const int32_t ref = WFETRef(s);
    if (ref < 0) {
        s->distance = kWFETNoDistance;
        WFETMIDI(s, out);
        return;
    }
    const auto r = static_cast<uint32_t>(ref);
    if (s->lagsRef != ref || s->lagsAt != s->extremaWritten) {
        WFETTimeLags(s, r);
        s->lagsRef = ref;
        s->lagsAt = s->extremaWritten;
    }

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
        const double lagCost = weight * lag;
        const double continuity = ContinuityPenalty(s, lag);
        const double d = CandidateDistance(s, r, c, lag, lagCost + continuity, bestScore);
        const double score = d + lagCost + continuity;
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
