#include "CountingNew.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace vocato::test {
namespace {

std::atomic<bool> counting{false};
std::atomic<size_t> allocations{0};

void* Allocate(size_t size) {
    if (counting.load(std::memory_order_relaxed)) {
        allocations.fetch_add(1, std::memory_order_relaxed);
    }
    if (void* p = std::malloc(size == 0 ? 1 : size)) {
        return p;
    }
    throw std::bad_alloc();
}

} // namespace

void StartCountingAllocations() {
    allocations.store(0);
    counting.store(true);
}

size_t StopCountingAllocations() {
    counting.store(false);
    return allocations.load();
}

} // namespace vocato::test

void* operator new(size_t size) { return vocato::test::Allocate(size); }
void* operator new[](size_t size) { return vocato::test::Allocate(size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
// GCC does not see that the replaced operator new pairs malloc with these frees.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void operator delete(void* p, size_t) noexcept { std::free(p); }
void operator delete[](void* p, size_t) noexcept { std::free(p); }
#pragma GCC diagnostic pop
