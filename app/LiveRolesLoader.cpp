#include "LiveRoles.h"

#include <dlfcn.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

namespace vocato {
namespace {

// The module is found beside the executable that is running, wherever that was started from.
std::string ModulePath() {
    std::error_code error;
    const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        return kLiveRolesModule;
    }
    return (executable.parent_path() / kLiveRolesModule).string();
}

// The module stays open for the rest of the process: the role's threads and Qt's plugins
// outlive the entry's return until exit.
template <typename Entry> Entry* FindEntry(const char* name) {
    const std::string path = ModulePath();
    void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        std::fprintf(stderr, "vocato: cannot load the window and live roles: %s\n", ::dlerror());
        return nullptr;
    }
    void* entry = ::dlsym(module, name);
    if (entry == nullptr) {
        std::fprintf(stderr, "vocato: %s is not a Vocato module: %s\n", path.c_str(), ::dlerror());
        return nullptr;
    }
    return reinterpret_cast<Entry*>(entry);
}

} // namespace

int RunWindowRoleFromModule(int argc, char** argv) {
    WindowRoleEntry* entry = FindEntry<WindowRoleEntry>(kWindowRoleEntry);
    return entry == nullptr ? 1 : entry(argc, argv);
}

int RunLiveFromModule(const app::LiveOptions& options) {
    LiveCommandEntry* entry = FindEntry<LiveCommandEntry>(kLiveCommandEntry);
    return entry == nullptr ? 1 : entry(&options);
}

} // namespace vocato
