// Key geometry of one 74-pixel keyboard octave, shared by the note display and the
// note-range slider so that a thumb sits over the key of its note.
#pragma once

#include <array>
#include <cstdint>

namespace vocato::ui {

inline constexpr int kOctaveWidth = 74;
// x offset of the key of each semitone counted from C.
inline constexpr std::array<int32_t, 12> NotePos = {5, 9, 16, 22, 26, 36, 42, 47, 52, 58, 64, 68};

} // namespace vocato::ui
