#include "InstrumentTables.h"

namespace vocato {

// The labels are shown as they stand, including the French "Orgues" and the
// leading blank of " Sound Effects".
const std::array<GMFamily, 16> kGMFamilies = {{
    {"Pianos",
     {"ACOUSTIC GRAND", "BRIGHT GRAND", "ELECTRIC GRAND", "HONKY TONK", "ELECTRIC PIANO 1",
      "ELECTRIC PIANO 2", "HARPSICHORD", "CLAVICHORD"}},
    {"Tuned Idiophones",
     {"CELESTA", "GLOCKENSPIEL", "MUSIC BOX", "VIBRAPHONE", "MARIMBA", "XYLOPHONE", "TUBULAR BELLS",
      "DULCIMER"}},
    {"Orgues",
     {"DRAWBAR ORGAN", "PERCUSSIVE ORGAN", "ROCK ORGAN", "CHURCH ORGAN", "REED ORGAN", "ACCORDION",
      "HARMONICA", "TANGO ACCORDION"}},
    {"Guitars",
     {"ACOUSTIC GUITAR NYLON", "ACOUSTIC GUITAR STEEL", "ELECTRIC GUITAR JAZZ",
      "ELECTRIC GUITAR CLEAN", "ELECTRIC GUITAR MUTED", "OVERDRIVEN GUITAR", "DISTORTION GUITAR",
      "GUITAR HARMONICS"}},
    {"Basses",
     {"ACOUSTIC BASS", "ELECTRIC BASS FINGER", "ELECTRIC BASS PICK", "FRETLESS BASS", "SLAP BASS 1",
      "SLAP BASS 2", "SYNTH BASS 1", "SYNTH BASS 2"}},
    {"Strings",
     {"VIOLIN", "VIOLA", "CELLO", "CONTRABASS", "TREMOLO STRINGS", "PIZZICATO STRINGS",
      "ORCHESTRAL STRINGS", "TIMPANI"}},
    {"Ensemble strings and voices",
     {"STRING ENSEMBLE 1", "STRING ENSEMBLE 2", "SYNTH STRINGS 1", "SYNTH STRINGS 2", "VOICE AAH",
      "VOICE OOH", "SYNTH VOICE", "ORCHESTRA HIT"}},
    {"Brass",
     {"TRUMPET", "TROMBONE", "TUBA", "MUTED TRUMPET", "FRENCH HORN", "BRASS SECTION",
      "SYNTH BRASS 1", "SYNTH BRASS 2"}},
    {"Reeds",
     {"SOPRANO SAX", "ALTO SAX", "TENOR SAX", "BARITONE SAX", "OBOE", "ENGLISH HORN", "BASSOON",
      "CLARINET"}},
    {"Pipes",
     {"PICCOLO", "FLUTE", "RECORDER", "PAN FLUTE", "BLOWN BOTTLE", "SHAKUHACHI", "WHISTLE",
      "OCARINA"}},
    {"Synth Leads",
     {"SQUARE WAVE", "SAWTOOTH WAVE", "CALLIOPE", "B_CHIFF", "CHARANG", "VOICE", "FIFTHS",
      "BASS LEAD"}},
    {"Synth Pads", {"NEW AGE", "WARM", "POLYSYNTH", "CHOIR", "BOWED", "METALLIC", "HALO", "SWEEP"}},
    {"Effects", {"FX 1", "FX 2", "FX 3", "FX 4", "FX 5", "FX 6", "FX 7", "FX 8"}},
    {"Ethnic", {"SITAR", "BANJO", "SHAMISEN", "KOTO", "KALIMBA", "BAGPIPE", "FIDDLE", "SHANAI"}},
    {"Percussion",
     {"TINKLE BELL", "AGOGO", "STEEL DRUMS", "WOODBLOCK", "TAIKO DRUMS", "MELODIC TOM",
      "SYNTH DRUM", "REVERSE CYMBAL"}},
    {" Sound Effects",
     {"FRET NOISE", "BREATH NOISE", "SEASHORE", "BIRD TWEET", "TELEPHONE", "HELICOPTER", "APPLAUSE",
      "GUNSHOT"}},
}};

// The labels keep their established spellings ("Trompet", "Trombon"), which saved
// settings and users already know.
const std::array<const char*, 20> kPresetLabels = {
    "Default",  "Male voice", "Female voice", "Guitars", "Bass",        "Violin",        "Viola",
    "Cello",    "Contrabass", "Trompet",      "Trombon", "French Horn", "Tuba",          "Horn",
    "Clarinet", "Bassoon",    "Piccolo",      "Flute",   "Oboe",        "Alto recorder",
};

} // namespace vocato
