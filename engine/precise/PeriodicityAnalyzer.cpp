#include "PeriodicityAnalyzer.h"

#include "ShiftedWindows.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace vocato::precise {
namespace {

constexpr int kMaxKeyMaxima = 512;
// The full-rate input only has to hold the refinement's window and lag: both are a few
// milliseconds at most.
constexpr uint64_t kFullRateSize = 1 << 13;
// Below MIDI note 11: the lowest frequency the capacity is sized for.
constexpr double kLowestFrequency = 14.0;

// Short periods span only a few samples, and a window of one of them is no average at all:
// every lag's window is at least this long.
constexpr double kMinWindowSeconds = 0.002;
// The decimated stream keeps at least 3.2 kHz of the spectrum (several harmonics of any sung
// note) and the first two harmonics of the highest tracked note, whose period then spans at
// least five samples; the full-rate refinement restores the precision.
constexpr double kMinAnalysisRate = 8000.0;
constexpr double kRateOverHighest = 5.0;
// That least rate is reached by a whole decimation factor, which at one input rate leaves
// half as much again to spare and at another almost none: at 48 kHz a violin's range would be
// analysed at 16 kHz, at 44.1 kHz at 22 kHz. Every input rate is decimated to the rate the
// tracker has at 44.1 kHz, as nearly as a whole factor allows, so a 48 kHz interface is
// analysed as a 44.1 kHz recording is.
constexpr double kReferenceRate = 44100.0;
// The residual bank may run at half the analysis rate if that keeps 2 kHz of the spectrum
// and the fundamental of the highest tracked note well below its Nyquist frequency.
constexpr double kMinResidualRate = 4000.0;
constexpr double kResidualRateOverHighest = 2.5;
// Low-pass cut-off as a fraction of the decimated rate: below its Nyquist frequency by enough
// for a sixth-order Butterworth to keep aliases 30 dB down.
constexpr double kCutoffFraction = 0.4;
// McLeod's key-maximum rule: the shortest lag whose periodicity is within this factor of the
// best one wins, which keeps the tracker off the sub-octaves (2, 3 ... periods) that match
// as well as the period itself.
constexpr double kPickFactor = 0.85;
// A true period repeats: the waveform also matches itself two periods back. A lag that only
// matches once (a strong formant harmonic of a chorus or a vowel) is no period; it must keep
// at least this fraction of its periodicity at twice the lag, and at every multiple up to the
// best lag.
constexpr double kRepeatFactor = 0.5;
// A sounding note keeps its own lag against an octave jump while its periodicity stays within
// this factor of the best: a weak fundamental must not flip the note.
constexpr double kKeepFactor = 0.75;
// An octave up counts as exact within 3 %, and as repeating as well within 0.02.
constexpr double kOctaveTolerance = 0.03;
constexpr double kOctaveMargin = 0.02;
// The cancellation's gain follows the note over this many of its periods, and never makes it
// more than twice as loud (a note swelling that fast is a new one).
constexpr double kGainPeriods = 16.0;
constexpr double kMaxGain = 2.0;
// The shortest window of the full-rate refinement.
constexpr double kRefineSeconds = 0.004;
// Periods longer than this many decimated samples are already precise to a cent or two by
// parabolic interpolation; only shorter ones are refined, which bounds the refinement's cost.
constexpr double kRefineBelowLag = 40.0;
// The residual at the analysis rate, for refining its period when its bank runs at half that
// rate: low-passed as for the bank, so that what is left of the cancelled note's upper
// harmonics does not pull the period; it holds the refinement's window and the longest lag
// refined, at any analysis rate up to 48 kHz.
constexpr uint64_t kResidualKept = 1 << 9;
static_assert(kResidualKept >= 4 * (kRefineBelowLag + 1) && kResidualKept >= 2 * kRefineSeconds * 48000,
              "the refined residual holds its window and its lag");
// A blown attack may sound its second harmonic before the fundamental has built up (the low
// notes of a recorder or a flute: the fundamental still 25 dB under the octave 30 ms after the
// onset, level with it only after 100 ms). McLeod's rule rightly takes the shorter of two lags
// that repeat about as well, and a weak fundamental hardly lowers the periodicity at the
// octave. In a copy of the input low-passed at the range's lowest note each octave up weighs
// 12 dB less, so a fundamental under the octave shows there: the copy repeats clearly at twice
// the lag, and that much better than at the lag itself, where a sound with nothing below the
// chosen period repeats as well at both. The input itself must repeat clearly at twice the lag
// too: where one note gives way to the next, the copy may favour the longer lag for a moment.
constexpr double kFundamentalClarity = 0.9;
constexpr double kFundamentalGain = 0.2;
// Before that, while the fundamental builds up (10-20 ms of a recorder's attack), the copy
// already repeats better at twice the lag, and the input nearly as well there as at the lag.
constexpr double kBuildingGain = 0.05;
constexpr double kBuildingShortfall = 0.02;
constexpr uint64_t kLowCopyCapacity = 1 << 15;
static_assert(kLowCopyCapacity >= 2 * (DifferenceBank::kMaxLag + 1),
              "the low copy holds the longest lag and a window no longer than that lag");

// Samples are quantised at twice the 16-bit resolution and limited to +-2^17, which keeps the
// difference sums exact (DifferenceBank.h).
constexpr double kQuantScale = 2.0;
constexpr int32_t kQuantLimit = 1 << 17;

} // namespace

PeriodicityAnalyzer::PeriodicityAnalyzer()
    : keyMaxima_(kMaxKeyMaxima), fullRate_(kFullRateSize), lowCopy_(kLowCopyCapacity), residualAtRate_(kResidualKept)
{
    Configure(44100.0, 55.0, 1760.0);
}

void PeriodicityAnalyzer::Configure(double rate, double minFreq, double maxFreq) noexcept
{
    double low = std::max(std::min(minFreq, maxFreq), kLowestFrequency);
    double high = std::min(std::max(minFreq, maxFreq), 0.45 * rate);
    low = std::min(low, high / 1.06);

    const double least = std::max(kMinAnalysisRate, kRateOverHighest * high);
    const double reference = kReferenceRate / std::max(1.0, std::floor(kReferenceRate / least));
    decimation_ = std::max(1, static_cast<int>(std::lround(rate / reference)));
    while (decimation_ > 1 && rate / decimation_ < least) {
        --decimation_;
    }
    analysisRate_ = rate / decimation_;
    const auto rangeAt = [low, high](double rate) {
        LagRange range;
        range.max = std::min(DifferenceBank::kMaxLag, static_cast<int>(std::ceil(rate / low)) + 1);
        range.min = std::min(std::max(2, static_cast<int>(rate / high * 0.97)), range.max - 1);
        return range;
    };
    lags_ = rangeAt(analysisRate_);
    const auto windowAt = [](double seconds, double rate) { return std::max(2, static_cast<int>(seconds * rate)); };
    signal_.Reset(lags_.max, windowAt(kMinWindowSeconds, analysisRate_), windowAt(kLongestWindowSeconds, analysisRate_));
    residualStep_ = analysisRate_ / 2.0 >= std::max(kMinResidualRate, kResidualRateOverHighest * high) ? 2 : 1;
    const double residualRate = analysisRate_ / residualStep_;
    residualLags_ = rangeAt(residualRate);
    residual_.Reset(residualLags_.max, windowAt(kMinWindowSeconds, residualRate), windowAt(kLongestWindowSeconds, residualRate));
    residualPhase_ = 0;
    residualPrevious_[0] = residualPrevious_[1] = 0.0;
    residualAtRate_.Reset(kResidualKept, std::min<uint64_t>(static_cast<uint64_t>(kRefineSeconds * analysisRate_),
                                                            kResidualKept / 2));

    highPass_.SetHighPass(rate, 0.5 * low, std::numbers::sqrt2 / 2.0);
    lowCopyFilter_.SetLowPass(analysisRate_, std::min(low, 0.45 * analysisRate_), std::numbers::sqrt2 / 2.0);
    const uint64_t lowNeeded = uint64_t(lags_.max) + uint64_t(signal_.Window(lags_.max)) + 2;
    lowCopy_.Reset(std::bit_ceil(lowNeeded), 1);
    // Butterworth sixth order as three sections: Q = 1 / (2 cos(k pi / 12)), k = 1, 3, 5.
    const double cutoff = std::min(kCutoffFraction * analysisRate_, 0.45 * rate);
    const double q[3] = {0.5176380902, 0.7071067812, 1.9318516526};
    for (int i = 0; i < 3; ++i) {
        lowPass_[i].SetLowPass(rate, cutoff, q[i]);
    }
    fullRate_.Reset(kFullRateSize, static_cast<uint64_t>(kRefineSeconds * rate));
    hum_.Configure(analysisRate_);
    phase_ = 0;
    cancelledLag_ = 0.0;
    cancelCross_ = cancelPower_ = 0.0;
}

void PeriodicityAnalyzer::SetCancelledFrequency(double frequency) noexcept
{
    const double lag = frequency > 0.0 ? analysisRate_ / frequency : 0.0;
    cancelledLag_ = lag >= 2.0 && lag <= lags_.max ? lag : 0.0;
    if (cancelledLag_ <= 0.0) {
        cancelCross_ = cancelPower_ = 0.0;
        return;
    }
    cancelKeep_ = 1.0 - 1.0 / (kGainPeriods * cancelledLag_);
}

void PeriodicityAnalyzer::Push(const int16_t* samples, uint32_t count) noexcept
{
    for (uint32_t i = 0; i < count; ++i) {
        double y = highPass_.Run(samples[i]);
        for (Biquad& section : lowPass_) {
            y = section.Run(y);
        }
        fullRate_.Push(static_cast<float>(y));
        if (++phase_ < decimation_) {
            continue;
        }
        phase_ = 0;
        y = hum_.Run(y);
        const double scaled = std::clamp(y * kQuantScale, -double(kQuantLimit), double(kQuantLimit));
        PushDecimated(static_cast<int32_t>(std::lround(scaled)));
    }
}

double PeriodicityAnalyzer::Cancelled(int32_t value) noexcept
{
    if (cancelledLag_ <= 0.0) {
        return 0.0;
    }
    // The input one period earlier, by cubic (Catmull-Rom) interpolation between the samples
    // around it; `back` counts from the sample before `value`, which is not yet in the bank.
    const double delay = cancelledLag_ - 1.0;
    const auto whole = static_cast<uint64_t>(delay);
    const double f = delay - double(whole);
    const double p0 = signal_.Sample(whole == 0 ? 0 : whole - 1);
    const double p1 = signal_.Sample(whole);
    const double p2 = signal_.Sample(whole + 1);
    const double p3 = signal_.Sample(whole + 2);
    const double earlier =
        p1 + 0.5 * f * (p2 - p0 + f * (2.0 * p0 - 5.0 * p1 + 4.0 * p2 - p3 + f * (3.0 * (p1 - p2) + p3 - p0)));
    // Scaled to the note's growth or decay per period (least squares, over about sixteen of
    // its periods): a note being released or swelling is cancelled as well as a steady one.
    cancelCross_ = cancelKeep_ * cancelCross_ + value * earlier;
    cancelPower_ = cancelKeep_ * cancelPower_ + earlier * earlier;
    const double gain = cancelPower_ > 0.0 ? std::clamp(cancelCross_ / cancelPower_, 0.0, kMaxGain) : 1.0;
    return std::clamp(std::round(value - gain * earlier), -double(kQuantLimit), double(kQuantLimit));
}

void PeriodicityAnalyzer::PushDecimated(int32_t value) noexcept
{
    const double residual = Cancelled(value);
    signal_.Push(value);
    lowCopy_.Push(static_cast<float>(lowCopyFilter_.Run(value)));
    if (residualStep_ == 1) {
        residual_.Push(static_cast<int32_t>(residual));
        return;
    }
    // Halving the rate: a [1 2 1] / 4 low-pass, which has its zero at the new Nyquist
    // frequency, then every other sample.
    const double smoothed = 0.25 * (residualPrevious_[1] + 2.0 * residualPrevious_[0] + residual);
    residualAtRate_.Push(static_cast<float>(smoothed));
    residualPrevious_[1] = residualPrevious_[0];
    residualPrevious_[0] = residual;
    if (++residualPhase_ == residualStep_) {
        residualPhase_ = 0;
        residual_.Push(static_cast<int32_t>(std::lround(smoothed)));
    }
}

PeriodicityAnalyzer::Peak PeriodicityAnalyzer::InterpolatedPeak(const double* n, int lag) const noexcept
{
    // Parabolic interpolation through the peak and its neighbours.
    const double shift = PeakShift(n[lag - 1], n[lag], n[lag + 1]);
    return {lag + shift, n[lag] - 0.25 * (n[lag - 1] - n[lag + 1]) * shift};
}

bool PeriodicityAnalyzer::Repeats(const DifferenceBank& bank, KeyMaximum& m, const LagRange& range) const noexcept
{
    if (m.repeats < 0) {
        // The newest period against the one two periods back: over the lag's own window, not
        // the doubled lag's, so a note is recognised after three of its periods rather than
        // four. Asked only of the key maxima that compete, since it costs a pass over the
        // window. Not asked of a period longer than the longest window, which is judged over
        // less than one of its periods already: the one-off matches of a strong harmonic lie
        // at the short lags the key-maximum rule reaches first, and a third period of a low
        // note would make it later still.
        const int twice = 2 * m.lag;
        const int window = bank.Window(m.lag);
        const bool beyond = twice > range.max || window < m.lag;
        m.repeats = beyond || bank.NormalisedNear(twice, window) >= kRepeatFactor * m.value;
    }
    return m.repeats == 1;
}

bool PeriodicityAnalyzer::RepeatsUpTo(const double* n, const KeyMaximum& m, int bestLag) const noexcept
{
    // A period repeats at each of its multiples. One strong partial, a reed's or a vowel's
    // formant a few octaves over a weak fundamental, repeats at twice its lag as well, but
    // its neighbours fall out of step with it at the multiples between there and the period.
    const double lag = InterpolatedPeak(n, m.lag).lag;
    for (int k = 3; k * lag <= bestLag; ++k) {
        const auto at = static_cast<int>(k * lag);
        if (std::max(n[at], n[at + 1]) < kRepeatFactor * m.value) {
            return false;
        }
    }
    return true;
}

int PeriodicityAnalyzer::FindKeyMaxima(const double* n, const LagRange& range) noexcept
{
    // The lobe around lag 0 is no period: key maxima start after the function first goes
    // negative, and each positive lobe after that contributes its highest point. Short periods
    // span few samples, so the sampled top of a peak can lie well below its true height; the
    // key maxima compete with their interpolated heights.
    int count = 0;
    bool seenNegative = false;
    bool inLobe = false;
    KeyMaximum lobe{0, 0.0, -1};
    auto record = [&](const KeyMaximum& m) {
        if (m.lag >= range.min && m.lag <= range.max && count < kMaxKeyMaxima) {
            keyMaxima_[count++] = {m.lag, InterpolatedPeak(n, m.lag).value, -1};
        }
    };
    for (int lag = 1; lag <= range.max + 1; ++lag) {
        const double v = n[lag];
        if (!seenNegative) {
            seenNegative = v < 0.0;
            continue;
        }
        if (v > 0.0) {
            if (!inLobe || v > lobe.value) {
                lobe = {lag, v, -1};
            }
            inLobe = true;
        } else if (inLobe) {
            record(lobe);
            inLobe = false;
        }
    }
    if (inLobe && lobe.lag <= range.max) {
        record(lobe);
    }
    return count;
}

int PeriodicityAnalyzer::ChooseLag(const DifferenceBank& bank, int count, double preferredLag,
                                   const LagRange& range) noexcept
{
    const double* n = bank.Normalised();
    // The best key maximum that repeats, tried from the highest down.
    double best = 0.0;
    int bestLag = 0;
    for (;;) {
        int top = -1;
        for (int i = 0; i < count; ++i) {
            if (keyMaxima_[i].repeats != 0 && (top < 0 || keyMaxima_[i].value > keyMaxima_[top].value)) {
                top = i;
            }
        }
        if (top < 0) {
            return 0;
        }
        if (Repeats(bank, keyMaxima_[top], range)) {
            best = keyMaxima_[top].value;
            bestLag = keyMaxima_[top].lag;
            break;
        }
    }
    int chosen = 0;
    while (keyMaxima_[chosen].value < kPickFactor * best || !Repeats(bank, keyMaxima_[chosen], range) ||
           !RepeatsUpTo(n, keyMaxima_[chosen], bestLag)) {
        ++chosen;
    }
    const int chosenLag = keyMaxima_[chosen].lag;
    if (preferredLag <= 0.0) {
        return chosenLag;
    }
    // The highest local maximum within a whole tone of the sounding note's lag. It need not be
    // a key maximum: in a mixture it may share a positive lobe with a higher peak.
    const double tone = std::exp2(2.0 / 12.0);
    const int low = std::max(range.min, static_cast<int>(preferredLag / tone));
    const int high = std::min(range.max, static_cast<int>(preferredLag * tone) + 1);
    int kept = 0;
    for (int lag = low; lag <= high; ++lag) {
        if (n[lag] >= n[lag - 1] && n[lag] >= n[lag + 1] && (kept == 0 || n[lag] > n[kept])) {
            kept = lag;
        }
    }
    // Kept against an octave-like jump while its periodicity is within reach of the best: a
    // weak fundamental or a strong formant must not flip the note. Not against an exact octave
    // up that repeats at least as well, though: a blown note may sound its lower octave for the
    // first few periods before it settles in its register, and a periodic sound matches itself
    // at two periods as well as at one, so the longer lag would otherwise hold on for ever.
    if (kept == 0 || std::abs(std::log2(double(chosenLag) / kept)) <= 0.5) {
        return chosenLag;
    }
    // Compared at their interpolated lags: a short period spans a dozen samples or fewer, and
    // one sample more or less is already several per cent.
    const Peak keptPeak = InterpolatedPeak(n, kept);
    const Peak chosenPeak = InterpolatedPeak(n, chosenLag);
    const double keptValue = keptPeak.value;
    const bool octaveUp = std::abs(2.0 * chosenPeak.lag / keptPeak.lag - 1.0) < kOctaveTolerance;
    if (octaveUp && chosenPeak.value >= keptValue - kOctaveMargin) {
        return chosenLag;
    }
    return keptValue >= kKeepFactor * best ? kept : chosenLag;
}

PeriodEstimate PeriodicityAnalyzer::Analyse(double preferredFrequency) noexcept
{
    signal_.Normalise();
    const double* n = signal_.Normalised();
    const int count = FindKeyMaxima(n, lags_);
    if (count == 0) {
        return {};
    }
    const double preferredLag = preferredFrequency > 0.0 ? analysisRate_ / preferredFrequency : 0.0;
    const int chosen = ChooseLag(signal_, count, preferredLag, lags_);
    if (chosen == 0) {
        return {};
    }
    const int lag = WithItsFundamental(n, chosen);
    const Peak peak = InterpolatedPeak(n, lag);
    // The nearest maximum at full rate lies within one decimated sample of the estimate.
    const double fullRateLag =
        peak.lag < kRefineBelowLag ? fullRate_.Refine(peak.lag * decimation_, decimation_) : peak.lag * decimation_;
    // Only a note about to start asks, and only of the period it would start at.
    const OctaveBelow below = preferredLag <= 0.0 && lag == chosen ? JudgeOctaveBelow(n, lag) : OctaveBelow::Unknown;
    return {analysisRate_ * decimation_ / fullRateLag, std::min(1.0, peak.value), below};
}

PeriodicityAnalyzer::Octave PeriodicityAnalyzer::OctaveUnder(const double* n, int lag) const noexcept
{
    const double once = InterpolatedPeak(n, lag).lag;
    const int twice = static_cast<int>(std::lround(2.0 * once));
    if (twice + 1 >= lags_.max) {
        return {};
    }
    int fundamental = twice;
    for (int d = -1; d <= 1; d += 2) {
        if (n[twice + d] > n[fundamental]) {
            fundamental = twice + d;
        }
    }
    return {static_cast<int>(std::lround(once)), twice, fundamental};
}

PeriodicityAnalyzer::CopyRepeats PeriodicityAnalyzer::CopyRepeatsAt(const Octave& octave) const noexcept
{
    // Both over the longer lag's window, each at the best of the three lags around it: the
    // copy is smooth, its peaks broad.
    const auto window = static_cast<uint64_t>(signal_.Window(octave.twice));
    return {lowCopy_.BestNear(octave.once, window), lowCopy_.BestNear(octave.twice, window)};
}

int PeriodicityAnalyzer::WithItsFundamental(const double* n, int lag) const noexcept
{
    const Octave octave = OctaveUnder(n, lag);
    // A fundamental under the chosen period lowers the input's own periodicity at that period
    // more than at twice it; without that, the copy need not be asked.
    if (octave.fundamental == 0 || n[octave.fundamental] < kFundamentalClarity || n[octave.fundamental] <= n[lag]) {
        return lag;
    }
    const CopyRepeats copy = CopyRepeatsAt(octave);
    return copy.twice >= kFundamentalClarity && copy.twice >= copy.once + kFundamentalGain ? octave.fundamental : lag;
}

OctaveBelow PeriodicityAnalyzer::JudgeOctaveBelow(const double* n, int lag) const noexcept
{
    const Octave octave = OctaveUnder(n, lag);
    if (octave.fundamental == 0 || n[octave.fundamental] < kFundamentalClarity) {
        return OctaveBelow::Unknown;
    }
    if (n[octave.fundamental] < n[lag] - kBuildingShortfall) {
        return OctaveBelow::Absent;
    }
    const CopyRepeats copy = CopyRepeatsAt(octave);
    return copy.twice >= copy.once + kBuildingGain ? OctaveBelow::Building : OctaveBelow::Absent;
}

PeriodEstimate PeriodicityAnalyzer::AnalyseResidual() noexcept
{
    if (cancelledLag_ <= 0.0) {
        return {};
    }
    residual_.Normalise();
    const double* n = residual_.Normalised();
    const int count = FindKeyMaxima(n, residualLags_);
    if (count == 0) {
        return {};
    }
    const int lag = ChooseLag(residual_, count, 0.0, residualLags_);
    if (lag == 0) {
        return {};
    }
    const Peak peak = InterpolatedPeak(n, lag);
    // At half the rate a short period spans only a few samples, and its pitch may be a quarter
    // tone off: enough to put a note just between two on the wrong side of their border. The
    // nearest maximum at the analysis rate lies within one sample at the bank's rate.
    const double atRate = peak.lag * residualStep_;
    const double refined = residualStep_ > 1 && atRate < kRefineBelowLag ? residualAtRate_.Refine(atRate, residualStep_)
                                                                         : atRate;
    return {analysisRate_ / refined, std::min(1.0, peak.value)};
}

double PeriodicityAnalyzer::RecentPower(double seconds) const noexcept
{
    return signal_.Power(uint64_t(seconds * analysisRate_ + 0.5)) / (kQuantScale * kQuantScale);
}

double PeriodicityAnalyzer::RecentResidualPower(double seconds) const noexcept
{
    return residual_.Power(uint64_t(seconds * analysisRate_ / residualStep_ + 0.5)) / (kQuantScale * kQuantScale);
}

} // namespace vocato::precise
