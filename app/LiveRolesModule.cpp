// The module's only exported symbols: the entries the executable looks up by name.
#include "LiveRoles.h"
#include "WindowRole.h"

#include <type_traits>

extern "C" {

[[gnu::visibility("default")]] int vocato_run_window_role(int argc, char** argv) {
    return vocato::RunWindowRole(argc, argv);
}

[[gnu::visibility("default")]] int vocato_run_live_command(const vocato::app::LiveOptions* options) {
    return vocato::app::RunLive(*options);
}

} // extern "C"

static_assert(std::is_same_v<decltype(vocato_run_window_role), vocato::WindowRoleEntry>);
static_assert(std::is_same_v<decltype(vocato_run_live_command), vocato::LiveCommandEntry>);
