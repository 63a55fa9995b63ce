// Periodicity of the input: a normalised square-difference function (McLeod and Wyvill,
// "A smarter way to find pitch", 2005; de Cheveigné and Kawahara's YIN, 2002, is the same idea
// normalised differently), kept up to date sample by sample on a band-limited, decimated copy
// of the input.
//
// For every lag tau the analyser holds the running sum of (x[j] - x[j - tau])^2 over the last
// W(tau) samples, with W(tau) proportional to tau: each lag is judged on the same number of
// its own periods, so high notes are found after a few milliseconds while low notes still
// get whole periods. The sums are exact integers, so they never drift and the result does not
// depend on how the input was cut into blocks. Decimating first (the tracked range decides by
// how much) makes the per-sample cost proportional to rate^2 / lowest frequency of the
// decimated stream, which is what keeps the tracker cheap. The chosen period is then refined
// on the band-limited input at the full rate, over one period, where the peak is smooth
// enough for parabolic interpolation to be exact to a fraction of a cent.
//
// Thread contract: construction allocates (off the audio thread); everything else runs on the
// audio thread and never allocates.
#pragma once

#include "Biquad.h"

#include <cstdint>
#include <vector>

namespace vocato::precise {

struct PeriodEstimate {
    double frequency = 0.0; // Hz; 0 when no periodic candidate lies in the range
    double clarity = 0.0;   // normalised periodicity of the chosen lag, at most 1
};

class PeriodicityAnalyzer {
public:
    PeriodicityAnalyzer();

    // Derives the decimation and the lag range and starts from silence.
    void Configure(double rate, double minFreq, double maxFreq) noexcept;
    void Push(const int16_t* samples, uint32_t count) noexcept;

    // The best period now. preferredFrequency > 0 names the pitch of the sounding note; a
    // candidate near it is kept against an octave jump unless the jump is clearly better.
    PeriodEstimate Analyse(double preferredFrequency) noexcept;

    // Mean square of the band-limited input over the last `seconds` (at least one decimated
    // sample), on the 16-bit scale. Measured over one period, it has no ripple within the
    // period, so a rise in it is a rise of the sound and not of its waveform.
    double RecentPower(double seconds) const noexcept;

    double AnalysisRate() const noexcept { return analysisRate_; }
    int Decimation() const noexcept { return decimation_; }

private:
    struct KeyMaximum {
        int lag;
        double value;
    };

    struct Peak {
        double lag;
        double value;
    };

    void PushDecimated(int32_t value) noexcept;
    Peak InterpolatedPeak(int lag) const noexcept;
    double FullRateNormalised(int lag) const noexcept;
    double RefineAtFullRate(double decimatedLag) const noexcept;
    void ComputeNormalised() noexcept;
    bool Repeats(const KeyMaximum& m) const noexcept;
    int FindKeyMaxima() noexcept;
    int ChooseKeyMaximum(int count, double preferredFrequency) const noexcept;

    std::vector<int32_t> ring_;    // decimated samples, quantised
    std::vector<uint64_t> energy_; // running sum of squares up to each ring index (mod 2^64)
    std::vector<int64_t> sums_;    // per lag: sum of squared differences over its window
    std::vector<int32_t> window_;  // per lag: window length
    std::vector<double> normalised_;
    std::vector<KeyMaximum> keyMaxima_;
    std::vector<float> fullRate_; // band-limited input before decimation
    uint64_t fullCount_ = 0;
    uint64_t refineWindow_ = 1;

    Biquad highPass_;
    Biquad lowPass_[3];
    int decimation_ = 1;
    int phase_ = 0;
    uint64_t count_ = 0; // decimated samples so far
    int minLag_ = 2;
    int maxLag_ = 2;
    double analysisRate_ = 44100.0;
};

} // namespace vocato::precise
