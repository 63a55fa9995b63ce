#include "Producer.h"

#include <atomic>

namespace vocato::media {
namespace {

std::atomic<int32_t> nextNodeId{1};

} // namespace

Producer::Producer() noexcept : id_(nextNodeId.fetch_add(1, std::memory_order_relaxed)) {}

} // namespace vocato::media
