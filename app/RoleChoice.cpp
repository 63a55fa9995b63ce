#include "RoleChoice.h"

#include <filesystem>
#include <system_error>

namespace vocato {

bool IsWindowRole(int argc, char** argv) {
    if (argc < 2) {
        return true;
    }
    std::error_code error;
    return IsControlPanelArgument(argv[1]) || std::filesystem::is_regular_file(argv[1], error);
}

} // namespace vocato
