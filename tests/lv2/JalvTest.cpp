// The bundle under a real LV2 host: jalv on a dummy JACK server of the test's own. The plugin
// is found through LV2_PATH, instantiated, and its ports appear as JACK ports.
#include "JackServer.h"
#include "TestHost.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <thread>

namespace vocato::lv2::test {
namespace {

using namespace std::chrono_literals;

// The ports the server lists once one named `needle` is among them; empty after five seconds.
std::string WaitForPort(const std::string& needle) {
    for (int attempt = 0; attempt < 50; ++attempt, std::this_thread::sleep_for(100ms)) {
        std::string ports;
        FILE* pipe = popen("jack_lsp 2>/dev/null", "r");
        for (char line[256]; pipe != nullptr && std::fgets(line, sizeof line, pipe) != nullptr;) {
            ports += line;
        }
        if (pipe != nullptr && pclose(pipe) == 0 && ports.find(needle) != std::string::npos) {
            return ports;
        }
    }
    return {};
}

TEST(JalvHost, RunsThePluginWithItsPortsOnADummyJackServer) {
    const vocato::test::JackServer jackd;
    ASSERT_TRUE(jackd.Ready()) << "the dummy JACK server did not start";
    const std::string& server = jackd.Name();
    setenv("LV2_PATH", std::filesystem::path(BundleDir()).parent_path().c_str(), 1);

    // -p prints the control values: the preset given on the command line shows it reached the
    // plugin's port. jalv runs until its standard input ends.
    const std::string log = (std::filesystem::temp_directory_path() / (server + "-jalv.txt")).string();
    const std::string command =
        "exec jalv -p -n vocato_jalv -c preset=4 " + std::string(kPluginUri) + " >'" + log + "'";
    FILE* jalv = popen(command.c_str(), "w");
    ASSERT_NE(jalv, nullptr);
    const std::string ports = WaitForPort("vocato_jalv:midi_out");
    // Running for a moment: a crash in run() would take the ports away and end jalv by a signal.
    std::this_thread::sleep_for(300ms);
    EXPECT_FALSE(WaitForPort("vocato_jalv:midi_out").empty());
    const int status = pclose(jalv);
    std::ifstream in(log);
    const std::string printed((std::istreambuf_iterator<char>(in)), {});
    std::filesystem::remove(log);

    EXPECT_NE(ports.find("vocato_jalv:in"), std::string::npos) << ports;
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_NE(printed.find("preset = 4"), std::string::npos) << printed;
}

} // namespace
} // namespace vocato::lv2::test
