// The bundle under a real LV2 host: jalv on a dummy JACK server of the test's own. The plugin
// is found through LV2_PATH, instantiated, and its ports appear as JACK ports.
#include "JackServer.h"
#include "JackTestClients.h"
#include "TestHost.h"

#include "Fixtures.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <sys/wait.h>
#include <thread>

namespace vocato::lv2::test {
namespace {

using namespace std::chrono_literals;

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
    const auto midiOut = [&] { return vocato::test::PortExists(server, "vocato_jalv:midi_out"); };
    // Each look opens a JACK client: one every 100 ms leaves jalv room to start.
    EXPECT_TRUE(vocato::test::WaitFor(midiOut, 5.0, [] { std::this_thread::sleep_for(90ms); }));
    EXPECT_TRUE(vocato::test::PortExists(server, "vocato_jalv:in"));
    // Running for a moment: a crash in run() would take the ports away and end jalv by a signal.
    std::this_thread::sleep_for(300ms);
    EXPECT_TRUE(midiOut());
    const int status = pclose(jalv);
    const std::string printed = vocato::test::ReadFile(log);
    std::filesystem::remove(log);

    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_NE(printed.find("preset = 4"), std::string::npos) << printed;
}

} // namespace
} // namespace vocato::lv2::test
