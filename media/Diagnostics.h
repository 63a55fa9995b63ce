// The diagnostic lines of the node and the application, kept with their texts and printed
// through one place so that `--quiet` can silence them.
//
// The audio thread may not print: it posts a line (a string literal and one number) into a
// fixed queue, and a thread that may block prints the queue with FlushDiagnostics.
#pragma once

namespace vocato::media {

// Any thread.
void SetDiagnosticsQuiet(bool quiet) noexcept;
bool DiagnosticsQuiet() noexcept;

// Debug-output lines are off unless switched on (they are for developers).
void SetDebugOutput(bool on) noexcept;

// Not the audio thread. Standard output, unless quiet.
void Diagnostic(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Not the audio thread. Standard error, only when debug output is on.
void DebugOutput(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Audio thread. `format` must be a string literal with at most one double conversion. A full
// queue drops the line.
void PostDiagnostic(const char* format, double value = 0.0) noexcept;

// Not the audio thread. Prints the posted lines in posting order.
void FlushDiagnostics();

} // namespace vocato::media
