#pragma once

#include "Message.h"

#include <string>
#include <string_view>

namespace vocato {

// The typed, human-readable form of a message, used by the settings file and the
// button archives:
//
//   what 'pref'
//   int8 "MidiChannel" 1
//   string "MidiPortName" "Midi Through:Midi Through Port-0"
//   rect "_frame" 0 0 34 24
//   message "_msg" {
//   what 'MRec'
//   }
//   end
//
// One line per value, in field order; a field with several values repeats its
// line. Lines starting with '#' are comments. The closing `end` line lets a
// reader tell a complete text from one cut short.
std::string MessageToText(const Message& message);

// Parses a whole text. Anything malformed, cut short or followed by more than
// blank lines and comments gives B_BAD_DATA and leaves `out` untouched.
status_t MessageFromText(std::string_view text, Message* out);

} // namespace vocato
