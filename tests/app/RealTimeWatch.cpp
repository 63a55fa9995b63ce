#include "RealTimeWatch.h"

#include "AudioThread.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>
#include <time.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void __libc_free(void*);
void* __libc_memalign(size_t, size_t);
}

namespace vocato::test {
namespace {

std::atomic<long> violations{0};
std::atomic<const char*> first{nullptr};

void Check(const char* what) noexcept {
    if (!media::OnAudioThread()) {
        return;
    }
    const char* none = nullptr;
    first.compare_exchange_strong(none, what);
    violations.fetch_add(1);
}

template <typename F> F Next(const char* name) {
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

} // namespace

long RealTimeViolations() { return violations.load(); }

std::string FirstViolation() {
    const char* what = first.load();
    return what != nullptr ? what : "";
}

void ResetRealTimeViolations() {
    violations = 0;
    first = nullptr;
}

} // namespace vocato::test

using vocato::test::Check;
using vocato::test::Next;

extern "C" {

void* malloc(size_t size) {
    Check("malloc");
    return __libc_malloc(size);
}

void* calloc(size_t n, size_t size) {
    Check("calloc");
    return __libc_calloc(n, size);
}

void* realloc(void* p, size_t size) {
    Check("realloc");
    return __libc_realloc(p, size);
}

void free(void* p) {
    if (p != nullptr) {
        Check("free");
    }
    __libc_free(p);
}

int posix_memalign(void** out, size_t alignment, size_t size) {
    Check("posix_memalign");
    *out = __libc_memalign(alignment, size);
    return *out != nullptr ? 0 : 12;
}

// Counted when called on a marked thread, then passed on to the real function.
#define WATCHED(ret, name, params, args)                                                           \
    ret name params {                                                                              \
        Check(#name);                                                                              \
        static auto real = Next<ret(*) params>(#name);                                             \
        return real args;                                                                          \
    }

WATCHED(int, pthread_mutex_lock, (pthread_mutex_t * m), (m))
WATCHED(int, pthread_rwlock_rdlock, (pthread_rwlock_t * l), (l))
WATCHED(int, pthread_rwlock_wrlock, (pthread_rwlock_t * l), (l))
WATCHED(int, sem_wait, (sem_t * s), (s))
WATCHED(int, nanosleep, (const struct timespec* req, struct timespec* rem), (req, rem))
WATCHED(int, clock_nanosleep,
        (clockid_t clock, int flags, const struct timespec* req, struct timespec* rem),
        (clock, flags, req, rem))
WATCHED(ssize_t, write, (int fd, const void* data, size_t size), (fd, data, size))
WATCHED(int, vfprintf, (FILE * out, const char* format, va_list args), (out, format, args))
WATCHED(size_t, fwrite, (const void* data, size_t size, size_t n, FILE* out), (data, size, n, out))
WATCHED(int, puts, (const char* s), (s))

int fprintf(FILE* out, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int n = vfprintf(out, format, args);
    va_end(args);
    return n;
}

int printf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int n = vfprintf(stdout, format, args);
    va_end(args);
    return n;
}

int vprintf(const char* format, va_list args) { return vfprintf(stdout, format, args); }

} // extern "C"
