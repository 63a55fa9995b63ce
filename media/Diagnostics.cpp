#include "Diagnostics.h"

#include "BoundedQueue.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace vocato::media {
namespace {

std::atomic<bool> quiet{false};
std::atomic<bool> debugOn{false};

struct PostedLine {
    const char* format;
    double value;
};

BoundedQueue<PostedLine, 1024>& Posted() {
    static BoundedQueue<PostedLine, 1024> queue;
    return queue;
}

} // namespace

void SetDiagnosticsQuiet(bool on) noexcept {
    quiet.store(on, std::memory_order_relaxed);
}

bool DiagnosticsQuiet() noexcept {
    return quiet.load(std::memory_order_relaxed);
}

void SetDebugOutput(bool on) noexcept {
    debugOn.store(on, std::memory_order_relaxed);
}

void Diagnostic(const char* format, ...) {
    if (DiagnosticsQuiet()) {
        return;
    }
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
}

void DebugOutput(const char* format, ...) {
    if (!debugOn.load(std::memory_order_relaxed)) {
        return;
    }
    va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
}

void PostDiagnostic(const char* format, double value) noexcept {
    if (!DiagnosticsQuiet()) {
        Posted().TryPush({format, value});
    }
}

void FlushDiagnostics() {
    PostedLine line;
    while (Posted().TryPop(line)) {
        Diagnostic(line.format, line.value);
    }
}

} // namespace vocato::media
