// Which periodicity the note decision should see when a note is released into the next one.
//
// The input's own periodicity answers for the dominant sound. While the last note still rings
// (it is sounding, or its release has not died away), the analysis also looks at the input
// with that note cancelled. When the cancelled input holds a strong periodic sound of another
// pitch, and the input's own estimate is still the old note, a common sub-harmonic of old and
// new (the period of the mixture) or, for close notes, a pitch between the two (their blend),
// the new sound is the one to follow. What is left that only repeats a note the input itself
// shows, at a multiple of its period, is that note; so is what is left that repeats at a
// fraction or at two or three of the periods of a note close to the old one, whose fundamental
// the cancelling takes or weakens.
//
// Thread contract: a pure function; audio thread safe.
#pragma once

namespace vocato::precise {

struct MixtureView {
    double frequency = 0.0; // the input's own best period, Hz (0 none)
    double clarity = 0.0;
    double residualFrequency = 0.0; // the best period with the old note cancelled
    double residualClarity = 0.0;
    double residualShare = 0.0; // power with the old note cancelled / power of the input
};

// Whether `ratio` lies within 3 % of a whole number of at least 2: of two frequencies that far
// apart, the higher is a harmonic of the lower.
bool WholeRatio(double ratio) noexcept;

// The frequency and clarity to decide on; `cancelled` is the frequency being cancelled,
// `previous` the last pitch of the note before, while it may still ring, and `previousNote`
// the pitch of that one's note number (0 for none): vibrato or the blend with the next note
// may have left its last pitch well off the pitch its tail rings at.
MixtureView ChooseSource(const MixtureView& view, double cancelled, double previous, double previousNote) noexcept;

// Whether what is left with the ringing note cancelled holds any trace of a sound other than
// the input's own estimate: periodic as a held note is, and more than a cancelled note leaves.
bool ResidualHoldsAnother(const MixtureView& view) noexcept;

enum class Hidden {
    No,
    // the note the sounding one replaced (`replaced`, 0 when it no longer rings), or a blend
    // of the cancelled note with a neighbour that the analysis cannot yet separate (a pitch
    // between the two)
    ByNeighbour,
    // a common sub-harmonic of the sounding note and another: 3 or more of its periods
    BySubharmonic,
};

// Whether the input's own estimate (`view.frequency`), taken while `sounding` sounds, more
// likely shows a mixture than a new note. Such a frame says nothing about the next note.
Hidden HiddenByMixture(const MixtureView& view, double sounding, double replaced, double cancelled) noexcept;

} // namespace vocato::precise
