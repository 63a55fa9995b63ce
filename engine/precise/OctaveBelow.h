// What the analysis says of a fundamental an octave under its estimate, for a note about to
// start: a blown note may sound its second harmonic alone for its first periods.
#pragma once

#include <cstdint>

namespace vocato::precise {

enum class OctaveBelow : uint8_t {
    // Not judged: a note sounds, the estimate already lies at that fundamental, or the input
    // repeats too little at twice the period to tell.
    Unknown,
    Absent,
    Building, // the low-passed input shows a fundamental coming up under the estimate
};

} // namespace vocato::precise
