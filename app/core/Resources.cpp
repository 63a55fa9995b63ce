#include "Resources.h"

#include "ButtonCatalogue.h"
#include "ImageResources.h"
#include "MessageText.h"

#include <QFile>
#include <algorithm>

// Q_INIT_RESOURCE declares a function in the global namespace, so it cannot be
// used inside ours. Resources in a static library are not registered until
// something calls it.
static void RegisterLinkedQtResources() {
    Q_INIT_RESOURCE(vocato);
}

namespace vocato {

ResourceSet* rsc = nullptr;

namespace {

std::vector<uint8_t> ToBytes(const Message& message) {
    std::string text = MessageToText(message);
    return {text.begin(), text.end()};
}

Message PlaceholderWindowArchive(const char* name) {
    // The window kind of an ordinary titled window in window archives.
    constexpr int32_t kTitledWindowType = 1;
    std::string title = std::string("Window \"") + name + "\" not found in resources!";
    Message archive(kArchiveType);
    archive.AddString("class", "BWindow");
    archive.AddString("_title", title);
    archive.AddRect("_frame", Rect{32, 32, 400, 64});
    archive.AddInt32("_type", kTitledWindowType);
    archive.AddInt32("_flags", 0);
    return archive;
}

} // namespace

status_t ResourceSet::AddResource(uint32_t type, int32_t id, std::vector<uint8_t> data,
                                  std::string_view name) {
    if (HasResource(type, id)) {
        return B_BAD_VALUE;
    }
    entries_.push_back(Entry{type, id, std::string(name), std::move(data)});
    return B_OK;
}

bool ResourceSet::HasResource(uint32_t type, int32_t id) const {
    return std::any_of(entries_.begin(), entries_.end(),
                       [&](const Entry& e) { return e.type == type && e.id == id; });
}

bool ResourceSet::HasResource(uint32_t type, std::string_view name) const {
    return LoadResource(type, name) != nullptr;
}

const std::vector<uint8_t>* ResourceSet::LoadResource(uint32_t type, std::string_view name) const {
    auto it = std::find_if(entries_.begin(), entries_.end(),
                           [&](const Entry& e) { return e.type == type && e.name == name; });
    return it == entries_.end() ? nullptr : &it->data;
}

bool InitRessources() {
    RegisterLinkedQtResources();
    static ResourceSet executable;
    if (executable.CountResources() == 0) {
        for (const ButtonDescription& button : kButtonCatalogue) {
            executable.AddResource(kArchiveType, button.id, ToBytes(ButtonArchive(button)),
                                   button.resourceName);
        }
    }
    rsc = &executable;
    return QFile::exists(ImageResourcePath("On"));
}

Message FindArchivedResource(const char* name, const ResourceSet* resources) {
    const ResourceSet* set = resources != nullptr ? resources : rsc;
    Message archive;
    const std::vector<uint8_t>* data =
        set != nullptr ? set->LoadResource(kArchiveType, name) : nullptr;
    if (data != nullptr &&
        MessageFromText(std::string_view(reinterpret_cast<const char*>(data->data()), data->size()),
                        &archive) == B_OK) {
        return archive;
    }
    return PlaceholderWindowArchive(name);
}

status_t StoreMessage(const char* name, const Message& message, ResourceSet* resources) {
    int32_t id = 0;
    while (resources->HasResource(kArchiveType, id)) {
        ++id;
    }
    return resources->AddResource(kArchiveType, id, ToBytes(message), name);
}

status_t LoadMessage(const char* name, Message* message, const ResourceSet* resources) {
    const std::vector<uint8_t>* data = resources->LoadResource(kArchiveType, name);
    if (data == nullptr) {
        return B_NAME_NOT_FOUND;
    }
    return MessageFromText(
        std::string_view(reinterpret_cast<const char*>(data->data()), data->size()), message);
}

} // namespace vocato
