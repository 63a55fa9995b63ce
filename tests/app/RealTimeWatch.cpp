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

int pthread_mutex_lock(pthread_mutex_t* m) {
    Check("pthread_mutex_lock");
    static auto real = Next<int (*)(pthread_mutex_t*)>("pthread_mutex_lock");
    return real(m);
}

int pthread_rwlock_rdlock(pthread_rwlock_t* l) {
    Check("pthread_rwlock_rdlock");
    static auto real = Next<int (*)(pthread_rwlock_t*)>("pthread_rwlock_rdlock");
    return real(l);
}

int pthread_rwlock_wrlock(pthread_rwlock_t* l) {
    Check("pthread_rwlock_wrlock");
    static auto real = Next<int (*)(pthread_rwlock_t*)>("pthread_rwlock_wrlock");
    return real(l);
}

int sem_wait(sem_t* s) {
    Check("sem_wait");
    static auto real = Next<int (*)(sem_t*)>("sem_wait");
    return real(s);
}

int nanosleep(const struct timespec* req, struct timespec* rem) {
    Check("nanosleep");
    static auto real = Next<int (*)(const struct timespec*, struct timespec*)>("nanosleep");
    return real(req, rem);
}

int clock_nanosleep(clockid_t clock, int flags, const struct timespec* req, struct timespec* rem) {
    Check("clock_nanosleep");
    static auto real = Next<int (*)(clockid_t, int, const struct timespec*, struct timespec*)>(
        "clock_nanosleep");
    return real(clock, flags, req, rem);
}

ssize_t write(int fd, const void* data, size_t size) {
    Check("write");
    static auto real = Next<ssize_t (*)(int, const void*, size_t)>("write");
    return real(fd, data, size);
}

int vfprintf(FILE* out, const char* format, va_list args) {
    Check("vfprintf");
    static auto real = Next<int (*)(FILE*, const char*, va_list)>("vfprintf");
    return real(out, format, args);
}

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

size_t fwrite(const void* data, size_t size, size_t n, FILE* out) {
    Check("fwrite");
    static auto real = Next<size_t (*)(const void*, size_t, size_t, FILE*)>("fwrite");
    return real(data, size, n, out);
}

int puts(const char* s) {
    Check("puts");
    static auto real = Next<int (*)(const char*)>("puts");
    return real(s);
}

} // extern "C"
