// The message codes the main window understands: the platform's requests, the menu items,
// the picture buttons and the sliders.
#pragma once

#include "Message.h"

namespace vocato {

inline constexpr uint32_t kAboutRequested = FourCC("_ABR");
inline constexpr uint32_t kQuitRequested = FourCC("_QRQ");
// Carries the string "directory" and the string "name" of the chosen MIDI file.
inline constexpr uint32_t kSaveRequested = FourCC("_SAV");

inline constexpr uint32_t kOpenWave = FourCC("mOpn");
inline constexpr uint32_t kExportMidi = FourCC("mMiS");
inline constexpr uint32_t kParameters = FourCC("mPar");
inline constexpr uint32_t kInputWindow = FourCC("mInp");
inline constexpr uint32_t kConverterControls = FourCC("mNod");

inline constexpr uint32_t kInstrumentButton = FourCC("BIns");
inline constexpr uint32_t kPresetButton = FourCC("BPst");
inline constexpr uint32_t kPlayWave = FourCC("BPla");
inline constexpr uint32_t kRecMidi = FourCC("MRec");
inline constexpr uint32_t kStopMidi = FourCC("MStp");
inline constexpr uint32_t kPanic = FourCC("BPan");

inline constexpr uint32_t kBendRangeSlider = FourCC("Bsld"); // float "Value"
inline constexpr uint32_t kNoteRangeSlider = FourCC("Mdic");

} // namespace vocato
