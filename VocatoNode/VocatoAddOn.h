// The factory that makes a window-less converter node for a host (the LV2 plugin).
#pragma once

#include "VocatoNode.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace vocato {

inline constexpr uint32_t kBufferConsumer = 1u << 0;
inline constexpr uint32_t kControllable = 1u << 1;

struct FlavorInfo {
    std::string_view name;
    std::string_view info;
    uint32_t kinds = 0;
    int32_t internalId = 0;
    int32_t possibleCount = 0; // 0: no limit
    media::MediaFormat inFormat;
};

class VocatoAddOn {
public:
    // `image` names the loaded plugin image where the host has one; nothing here needs it.
    explicit VocatoAddOn(int32_t image) { static_cast<void>(image); }
    ~VocatoAddOn();

    media::Status InitCheck(const char** failureText) const;
    int32_t CountFlavors() const { return 1; }
    media::Status GetFlavorAt(int32_t n, const FlavorInfo** info) const;
    // Not the node thread. A node with no window, made by this add-on, on channel 1.
    std::unique_ptr<VocatoNode> InstantiateNodeFor(const FlavorInfo* info,
                                                   NodeOptions options = {});
    bool WantsAutoStart() const { return false; }
};

} // namespace vocato

// The entry point a host looks up by this unmangled name.
extern "C" vocato::VocatoAddOn* make_media_addon(int32_t image);
