#include "JackServer.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace vocato::test {
namespace {

std::atomic<int> serial{0};

bool Lsp(const std::string& server, const std::string& rest) {
    return std::system(("jack_lsp -s " + server + rest).c_str()) == 0;
}

} // namespace

JackServer::JackServer(int period, int rate, const std::string& name, bool realtime)
    : name_(name.empty() ? "vocato_test_" + std::to_string(::getpid()) + "_" +
                               std::to_string(serial.fetch_add(1))
                         : name) {
    ::setenv("JACK_NO_START_SERVER", "1", 1);
    ::setenv("JACK_DEFAULT_SERVER", name_.c_str(), 1);
    const std::string p = std::to_string(period);
    const std::string r = std::to_string(rate);
    pid_ = ::fork();
    if (pid_ == 0) {
        // A test process that is killed (a time-out, a crash) takes its server with it.
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(null, STDERR_FILENO);
        // Synchronous mode: every client runs in every cycle even when one is late, so that
        // frame positions stay exact on a busy machine; and a generous client timeout, so that
        // a busy machine does not get a slow test client thrown out.
        ::execlp("jackd", "jackd", "-n", name_.c_str(), realtime ? "-R" : "--no-realtime", "-S",
                 "-t", "5000", "-d", "dummy", "-r", r.c_str(), "-p", p.c_str(),
                 static_cast<char*>(nullptr));
        ::_exit(127);
    }
    for (int attempt = 0; pid_ > 0 && attempt < 100 && !ready_; ++attempt) {
        ready_ = Lsp(name_, " >/dev/null 2>&1");
        std::this_thread::sleep_for(std::chrono::milliseconds(ready_ ? 0 : 50));
    }
}

JackServer::~JackServer() { Kill(SIGTERM); }

void JackServer::Kill(int signal) {
    if (pid_ > 0) {
        ::kill(pid_, signal);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }
}

bool PortExists(const std::string& server, const std::string& port) {
    return Lsp(server, " 2>/dev/null | grep -qx '" + port + "'");
}

bool PortsConnected(const std::string& server, const std::string& port, const std::string& other) {
    return Lsp(server, " -c " + port + " 2>/dev/null | grep -qx '   " + other + "'");
}

} // namespace vocato::test
