#pragma once

#include "Message.h"

#include <string>
#include <string_view>
#include <vector>

namespace vocato {

// Resource type of an archived object: one message in its text form.
inline constexpr uint32_t kArchiveType = FourCC("ARCV");

// Typed, numbered, named blobs, as an executable carries them. The images live
// in the Qt resource system (ImageResources.h); this set holds the archives.
class ResourceSet {
public:
    status_t AddResource(uint32_t type, int32_t id, std::vector<uint8_t> data,
                         std::string_view name);
    bool HasResource(uint32_t type, int32_t id) const;
    bool HasResource(uint32_t type, std::string_view name) const;
    // The data of the resource of that type and name; null when there is none.
    const std::vector<uint8_t>* LoadResource(uint32_t type, std::string_view name) const;
    int32_t CountResources() const { return int32_t(entries_.size()); }

private:
    struct Entry {
        uint32_t type;
        int32_t id;
        std::string name;
        std::vector<uint8_t> data;
    };
    std::vector<Entry> entries_;
};

// The executable's own resources once InitRessources has run; null before.
extern ResourceSet* rsc;

// Registers the Qt resources linked into the executable and fills `rsc` with
// the archives of the front panel's buttons. Safe to call more than once.
// GUI thread only (Qt resource registration).
bool InitRessources();

// The archive stored under `name` in `resources` (null means `rsc`). A missing
// name is not an error: the result is the archive of a placeholder window whose
// title says which resource is missing.
Message FindArchivedResource(const char* name, const ResourceSet* resources = nullptr);

// Stores the message under the lowest free archive ID, counting from 0.
status_t StoreMessage(const char* name, const Message& message, ResourceSet* resources);

// Fills `message` from the archive named `name`; without one, leaves it
// untouched and returns B_NAME_NOT_FOUND.
status_t LoadMessage(const char* name, Message* message, const ResourceSet* resources);

} // namespace vocato
