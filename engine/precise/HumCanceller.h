// Mains hum taken out of the input before its periodicity is judged.
//
// Hum is the one background that is periodic: 50 or 60 Hz and its first harmonics, steady for
// minutes. Left in, it is a sound of its own under every note: with the sounding note
// cancelled, what is left shows the hum's period, a hum partial next to a low note's
// fundamental bends its estimate, and to a bass the hum alone is a note.
//
// Each partial of both mains series is measured by a lock-in (the input times the partial's
// phasor, averaged exponentially). Nothing is taken away until hum has been heard on its own:
// while the input rests at its quiet floor, the lock-ins learn, and once one series holds most
// of that quiet input's power, the input has hum. From then on that series is learnt all the
// time, over half a second while something plays (short enough to follow the mains drifting
// a few hundredths of a hertz), and subtracted. An input whose quiet floor is silence or a
// broad noise is never touched, so its notes' partials near a multiple of 50 or 60 Hz are
// never taken for hum.
//
// Thread contract: everything runs on the audio thread and never allocates.
#pragma once

#include <array>
#include <complex>

namespace vocato::precise {

class HumCanceller {
public:
    // Starts from silence with no hum heard.
    void Configure(double rate) noexcept;
    // The input sample with the hum estimate taken away.
    double Run(double x) noexcept;
    // Whether the quiet floor has shown hum; from then on it is taken away.
    bool Heard() const noexcept { return chosen_ >= 0; }
    // The largest the hum estimate can swing to, the sum of its partials' amplitudes; 0 until
    // hum is heard.
    double Amplitude() const noexcept;

private:
    static constexpr int kPartials = 6;
    struct Series {
        std::complex<double> phase{1.0, 0.0};
        std::complex<double> step{1.0, 0.0};
        std::array<std::complex<double>, kPartials> partial{};
    };

    // The estimate of `series` now, learning from `x` at `learn`.
    static double Follow(Series& series, double x, double learn) noexcept;
    static double Power(const Series& series) noexcept;
    // Follows the input's power and floor; whether the input rests at its floor now.
    bool Quiet(double x) noexcept;
    void Listen(double x) noexcept;
    void DecideHeard() noexcept;

    std::array<Series, 2> series_{};
    int chosen_ = -1; // the series heard, -1 while listening
    double restingLearn_ = 0.0;
    double playingLearn_ = 0.0;
    double powerKeep_ = 0.0;
    double power_ = 0.0;
    // The lowest power of each of the blocks the floor's memory is cut into.
    static constexpr int kFloorBlocks = 20;
    std::array<double, kFloorBlocks> floorBlocks_{};
    int floorBlock_ = 0;
    int floorBlockSamples_ = 1;
    int inBlock_ = 0;
    int warmUp_ = 0;
    double blockLowest_ = 0.0;
    double blocksLowest_ = 0.0;
    double quietPower_ = 0.0;
    double quietWeight_ = 0.0;
    int sinceRenormalise_ = 0;
};

} // namespace vocato::precise
