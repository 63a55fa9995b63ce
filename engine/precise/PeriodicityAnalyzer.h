// Periodicity of the input, kept up to date sample by sample: the normalised square-difference
// function (McLeod and Wyvill 2005; de Cheveigné and Kawahara's YIN, 2002, is the same idea
// normalised differently) of a band-limited, decimated copy of the input, with McLeod's
// key-maximum rule for the period and a full-rate refinement of short periods.
//
// Decimating first (the tracked range decides by how much) makes the cost per input sample
// proportional to (decimated rate)^2 / lowest frequency, which is what keeps the tracker
// cheap. Each lag is judged over one of its own periods (at least 2 ms, at most 12 ms), so
// high notes are found after a few milliseconds while low notes get a whole period, or as
// much of a very long one as their harmonics need.
//
// A second bank analyses the input with the sounding note cancelled: a comb filter that
// subtracts the input one period of that note earlier (de Cheveigné's harmonic cancellation,
// 1993), scaled by how much the note grows or decays per period, so that a note fading in its
// release leaves as little behind as a steady one. It only has to name the new note, so it
// runs at half the analysis rate when that still holds its fundamental comfortably. When a
// note is released into the next one (legato, or the release of a synthesizer or a room), the
// mixture of both is periodic in their common period, a sub-harmonic of both; with the old
// note cancelled, the new one shows its own period.
//
// Thread contract: construction allocates (off the audio thread); everything else runs on the
// audio thread and never allocates.
#pragma once

#include "Biquad.h"
#include "DifferenceBank.h"
#include "HumCanceller.h"
#include "OctaveBelow.h"
#include "RecentSignal.h"

#include <cstdint>
#include <vector>

namespace vocato::precise {

struct PeriodEstimate {
    double frequency = 0.0; // Hz; 0 when no periodic candidate lies in the range
    double clarity = 0.0;   // normalised periodicity of the chosen lag, at most 1
    OctaveBelow octaveBelow = OctaveBelow::Unknown; // judged only without a preferred frequency
};

class PeriodicityAnalyzer {
public:
    // A long period holds many cycles of its harmonics within a part of it: waiting for two
    // whole periods of a low note (50 ms for a bass's E1) before its first estimate costs more
    // time than it buys certainty, so no lag is judged over more than this.
    static constexpr double kLongestWindowSeconds = 0.012;

    PeriodicityAnalyzer();

    // Derives the decimation and the lag range and starts from silence.
    void Configure(double rate, double minFreq, double maxFreq) noexcept;
    // The period to cancel from now on, as a frequency; 0 cancels nothing.
    void SetCancelledFrequency(double frequency) noexcept;
    void Push(const int16_t* samples, uint32_t count) noexcept;

    // The best period now. preferredFrequency > 0 names the pitch of the sounding note; a
    // candidate near it is kept against an octave jump unless the jump is clearly better.
    PeriodEstimate Analyse(double preferredFrequency) noexcept;
    // The best period of what remains with the cancelled period removed.
    PeriodEstimate AnalyseResidual() noexcept;

    // Mean square of the band-limited input over the last `seconds`, on the 16-bit scale.
    // Measured over one period, it has no ripple within the period, so a rise in it is a rise
    // of the sound and not of its waveform.
    double RecentPower(double seconds) const noexcept;
    // The same for what remains after cancellation.
    double RecentResidualPower(double seconds) const noexcept;
    // The largest swing of the mains hum taken out of the input before analysis, on the 16-bit
    // scale; 0 while none has been heard.
    double HumAmplitude() const noexcept { return hum_.Amplitude(); }

private:
    struct KeyMaximum {
        int lag;
        double value;
        int repeats; // -1 until asked, then 0 or 1
    };
    struct Peak {
        double lag;
        double value;
    };
    // The lags one bank searches.
    struct LagRange {
        int min = 2;
        int max = 2;
    };

    void PushDecimated(int32_t value) noexcept;
    double Cancelled(int32_t value) noexcept;
    Peak InterpolatedPeak(const double* n, int lag) const noexcept;
    bool Repeats(const DifferenceBank& bank, KeyMaximum& m, const LagRange& range) const noexcept;
    // Whether `m` keeps the repeat check's share of its periodicity in `n` at every further
    // multiple of its lag up to `bestLag`.
    bool RepeatsUpTo(const double* n, const KeyMaximum& m, int bestLag) const noexcept;
    int FindKeyMaxima(const double* n, const LagRange& range) noexcept;
    // 0 when no key maximum repeats.
    int ChooseLag(const DifferenceBank& bank, int count, double preferredLag, const LagRange& range) noexcept;
    // A lag and twice it (both rounded from its interpolated value), where a fundamental an
    // octave under it repeats, and the best of the three lags around that; all 0 when twice
    // the lag lies beyond the range.
    struct Octave {
        int once = 0;
        int twice = 0;
        int fundamental = 0;
    };
    Octave OctaveUnder(const double* n, int lag) const noexcept;
    // How well the low-passed copy repeats at the lag and at twice it.
    struct CopyRepeats {
        double once = 0.0;
        double twice = 0.0;
    };
    CopyRepeats CopyRepeatsAt(const Octave& octave) const noexcept;
    // `lag`, or twice it where the low-passed copy shows a fundamental under the chosen period.
    int WithItsFundamental(const double* n, int lag) const noexcept;
    OctaveBelow JudgeOctaveBelow(const double* n, int lag) const noexcept;

    DifferenceBank signal_;
    DifferenceBank residual_;
    std::vector<KeyMaximum> keyMaxima_;
    RecentSignal fullRate_; // band-limited input before decimation

    HumCanceller hum_; // on the decimated input, before both banks
    Biquad highPass_;
    Biquad lowPass_[3];
    Biquad lowCopyFilter_;
    RecentSignal lowCopy_; // the decimated input low-passed at the range's lowest note
    RecentSignal residualAtRate_; // what the residual bank takes every other sample of, every sample
    int decimation_ = 1;
    int phase_ = 0;
    LagRange lags_;
    LagRange residualLags_;
    int residualStep_ = 1; // the residual bank runs at the analysis rate / residualStep_
    int residualPhase_ = 0;
    double residualPrevious_[2] = {0.0, 0.0};
    double cancelledLag_ = 0.0; // decimated samples; 0 = none
    double cancelCross_ = 0.0;  // of the input with itself one cancelled period earlier
    double cancelPower_ = 0.0;  // of the input one cancelled period earlier
    double cancelKeep_ = 0.0;   // how much of both sums one sample keeps
    double analysisRate_ = 44100.0;
};

} // namespace vocato::precise
