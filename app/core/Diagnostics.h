#pragma once

namespace vocato {

// The program's diagnostic lines go through here so that `--quiet` can silence
// them all at once. Printf-style; the caller supplies the line end.
void Diagnostic(const char* format, ...) __attribute__((format(printf, 1, 2)));

void SetDiagnosticsQuiet(bool quiet);

} // namespace vocato
