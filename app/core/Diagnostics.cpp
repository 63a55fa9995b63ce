#include "Diagnostics.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace vocato {

namespace {
std::atomic<bool> quietDiagnostics{false};
}

void Diagnostic(const char* format, ...) {
    if (quietDiagnostics.load(std::memory_order_relaxed)) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
    std::fflush(stdout);
}

void SetDiagnosticsQuiet(bool quiet) {
    quietDiagnostics.store(quiet, std::memory_order_relaxed);
}

} // namespace vocato
