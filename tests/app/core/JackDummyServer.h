#pragma once

// A private JACK server on the dummy backend for one test, made the default
// server of this process (JACK_DEFAULT_SERVER) and stopped when the object goes.
#include <jack/jack.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

class JackDummyServer {
public:
    JackDummyServer() {
        const char* argv[] = {"jackd", "--no-realtime", "-n", name_.c_str(), "-d",   "dummy",
                              "-r",    "48000",         "-p", "256",         nullptr};
        if (::posix_spawnp(&pid_, "jackd", nullptr, nullptr, const_cast<char**>(argv), environ)) {
            pid_ = -1;
            return;
        }
        ::setenv("JACK_DEFAULT_SERVER", name_.c_str(), 1);
        for (int attempt = 0; attempt < 100 && !running_; ++attempt) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            if (jack_client_t* probe =
                    jack_client_open("vocato-probe", JackNoStartServer, nullptr)) {
                jack_client_close(probe);
                running_ = true;
            }
        }
    }
    ~JackDummyServer() {
        if (pid_ > 0) {
            ::kill(pid_, SIGTERM);
            ::waitpid(pid_, nullptr, 0);
        }
        ::unsetenv("JACK_DEFAULT_SERVER");
    }
    JackDummyServer(const JackDummyServer&) = delete;
    JackDummyServer& operator=(const JackDummyServer&) = delete;

    // False when jackd could not be started or did not answer in time.
    bool IsRunning() const { return running_; }

private:
    std::string name_ = "vocato-appcore-" + std::to_string(::getpid());
    pid_t pid_ = -1;
    bool running_ = false;
};
