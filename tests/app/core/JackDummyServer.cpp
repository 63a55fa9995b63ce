#include "JackDummyServer.h"

#include <jack/jack.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

JackDummyServer::JackDummyServer() : name_("vocato-appcore-" + std::to_string(::getpid())) {
    const char* argv[] = {"jackd", "--no-realtime", "-n", name_.c_str(), "-d",   "dummy",
                          "-r",    "48000",         "-p", "256",         nullptr};
    if (::posix_spawnp(&pid_, "jackd", nullptr, nullptr, const_cast<char**>(argv), environ) != 0) {
        pid_ = -1;
        return;
    }
    ::setenv("JACK_DEFAULT_SERVER", name_.c_str(), 1);
    for (int attempt = 0; attempt < 100 && !running_; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        jack_client_t* probe =
            jack_client_open("vocato-probe", JackOptions(JackNoStartServer), nullptr);
        if (probe != nullptr) {
            jack_client_close(probe);
            running_ = true;
        }
    }
}

JackDummyServer::~JackDummyServer() {
    if (pid_ > 0) {
        ::kill(pid_, SIGTERM);
        int status = 0;
        ::waitpid(pid_, &status, 0);
    }
    ::unsetenv("JACK_DEFAULT_SERVER");
}
