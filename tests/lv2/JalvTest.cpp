// The bundle under a real LV2 host: jalv on a dummy JACK server of the test's own. The plugin
// is found through LV2_PATH, instantiated, and its ports appear as JACK ports.
#include "TestHost.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vocato::lv2::test {
namespace {

using namespace std::chrono_literals;

// `input`, when given, receives the write end of a pipe on the child's standard input: jalv
// quits when its standard input ends.
pid_t Spawn(const std::vector<std::string>& argv, const std::string& output, int* input = nullptr) {
    int fds[2] = {-1, -1};
    if (input != nullptr && pipe(fds) != 0) {
        return -1;
    }
    const pid_t pid = fork();
    if (pid == 0) {
        if (input != nullptr) {
            dup2(fds[0], STDIN_FILENO);
            close(fds[0]);
            close(fds[1]);
        }
        std::vector<char*> args;
        for (const std::string& a : argv) {
            args.push_back(const_cast<char*>(a.c_str()));
        }
        args.push_back(nullptr);
        std::freopen(output.c_str(), "w", stdout);
        execvp(args[0], args.data());
        _exit(127);
    }
    if (input != nullptr) {
        close(fds[0]);
        *input = fds[1];
    }
    return pid;
}

// SIGTERM, then SIGKILL if it has not gone within two seconds. True when it ended on the TERM.
bool Stop(pid_t pid) {
    kill(pid, SIGTERM);
    for (int i = 0; i < 40; ++i) {
        if (waitpid(pid, nullptr, WNOHANG) == pid) {
            return true;
        }
        std::this_thread::sleep_for(50ms);
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    return false;
}

std::string JackPorts(const std::string& server) {
    std::string out;
    FILE* pipe = popen(("jack_lsp -s " + server + " 2>/dev/null").c_str(), "r");
    char line[256];
    while (pipe != nullptr && std::fgets(line, sizeof line, pipe) != nullptr) {
        out += line;
    }
    const int status = pipe != nullptr ? pclose(pipe) : -1;
    return status == 0 ? out : std::string();
}

// Polls for up to `seconds`; the ports listed when `found` held, or empty.
template <typename Found>
std::string WaitForPorts(const std::string& server, Found found, double seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (std::chrono::steady_clock::now() < end) {
        const std::string ports = JackPorts(server);
        if (!ports.empty() && found(ports)) {
            return ports;
        }
        std::this_thread::sleep_for(100ms);
    }
    return {};
}

TEST(JalvHost, RunsThePluginWithItsPortsOnADummyJackServer) {
    const std::string server = "vocato-lv2-" + std::to_string(getpid());
    setenv("JACK_NO_START_SERVER", "1", 1);
    setenv("JACK_DEFAULT_SERVER", server.c_str(), 1);
    setenv("LV2_PATH", std::filesystem::path(BundleDir()).parent_path().c_str(), 1);

    const pid_t jackd =
        Spawn({"jackd", "-n", server, "--no-realtime", "-d", "dummy", "-r", "44100", "-p", "256"},
              "/dev/null");
    ASSERT_GT(jackd, 0);
    ASSERT_FALSE(WaitForPorts(
                     server, [](const std::string&) { return true; }, 5.0)
                     .empty())
        << "the dummy JACK server did not start";

    const std::string client = "vocato_jalv";
    const std::string log =
        (std::filesystem::temp_directory_path() / (server + "-jalv.txt")).string();
    int jalvInput = -1;
    // -p prints the control values: the preset given on the command line shows it reached
    // the plugin's port.
    const pid_t jalv =
        Spawn({"jalv", "-p", "-n", client, "-c", "preset=4", kPluginUri}, log, &jalvInput);
    ASSERT_GT(jalv, 0);
    const std::string ports = WaitForPorts(
        server,
        [&](const std::string& p) { return p.find(client + ":midi_out") != std::string::npos; },
        5.0);
    // Running for a moment: a crash in run() would end jalv before it is asked to stop.
    std::this_thread::sleep_for(300ms);
    const bool alive = waitpid(jalv, nullptr, WNOHANG) == 0;
    const bool jalvStopped = Stop(jalv);
    close(jalvInput);
    Stop(jackd);
    std::ifstream in(log);
    const std::string printed((std::istreambuf_iterator<char>(in)), {});
    std::filesystem::remove(log);

    EXPECT_NE(ports.find(client + ":in"), std::string::npos) << ports;
    EXPECT_NE(ports.find(client + ":midi_out"), std::string::npos) << ports;
    EXPECT_TRUE(alive);
    EXPECT_NE(printed.find("preset = 4"), std::string::npos) << printed;
    EXPECT_TRUE(jalvStopped);
}

} // namespace
} // namespace vocato::lv2::test
