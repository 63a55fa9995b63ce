#pragma once

#include <string>
#include <sys/types.h>

// A private JACK server on the dummy backend for one test: it gets a name of
// its own, becomes the default server of this process (JACK_DEFAULT_SERVER),
// and is stopped again when the object goes.
class JackDummyServer {
public:
    JackDummyServer();
    ~JackDummyServer();
    JackDummyServer(const JackDummyServer&) = delete;
    JackDummyServer& operator=(const JackDummyServer&) = delete;

    // False when jackd could not be started or did not answer in time.
    bool IsRunning() const { return running_; }
    const std::string& Name() const { return name_; }

private:
    std::string name_;
    pid_t pid_ = -1;
    bool running_ = false;
};
