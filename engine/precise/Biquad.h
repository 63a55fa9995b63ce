// A second-order section in double precision (transposed direct form II), with the low-pass
// and high-pass designs of the Audio EQ Cookbook (R. Bristow-Johnson). The precise tracker
// cascades these to band-limit its input before decimating; double precision keeps the
// filters quiet at cut-offs far below the sample rate.
#pragma once

#include <cmath>
#include <numbers>

namespace vocato::precise {

class Biquad {
public:
    void SetLowPass(double rate, double cutoff, double q) noexcept { Design(rate, cutoff, q, true); }
    void SetHighPass(double rate, double cutoff, double q) noexcept { Design(rate, cutoff, q, false); }
    void Reset() noexcept { z1_ = z2_ = 0.0; }

    double Run(double x) noexcept
    {
        const double y = b0_ * x + z1_;
        z1_ = b1_ * x - a1_ * y + z2_;
        z2_ = b2_ * x - a2_ * y;
        return y;
    }

private:
    void Design(double rate, double cutoff, double q, bool lowPass) noexcept
    {
        const double w0 = 2.0 * std::numbers::pi * cutoff / rate;
        const double cosw = std::cos(w0);
        const double alpha = std::sin(w0) / (2.0 * q);
        const double a0 = 1.0 + alpha;
        const double edge = lowPass ? (1.0 - cosw) : (1.0 + cosw);
        b0_ = edge * 0.5 / a0;
        b1_ = (lowPass ? edge : -edge) / a0;
        b2_ = b0_;
        a1_ = -2.0 * cosw / a0;
        a2_ = (1.0 - alpha) / a0;
        Reset();
    }

    double b0_ = 1.0, b1_ = 0.0, b2_ = 0.0, a1_ = 0.0, a2_ = 0.0;
    double z1_ = 0.0, z2_ = 0.0;
};

} // namespace vocato::precise
