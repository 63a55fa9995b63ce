// A private jackd with the dummy backend for one test: a unique server name, no real-time
// scheduling, and the environment set so that no client ever starts a server of its own.
#pragma once

#include <string>
#include <sys/types.h>

namespace vocato::test {

class JackServer {
public:
    // Starts the server and waits until it answers; `Ready()` is false if it never did.
    // `realtime`: ask for real-time scheduling (benchmarks); tests never need it.
    explicit JackServer(int period = 256, int rate = 44100, const std::string& name = "",
                        bool realtime = false);
    ~JackServer();
    JackServer(const JackServer&) = delete;
    JackServer& operator=(const JackServer&) = delete;

    bool Ready() const { return ready_; }
    const std::string& Name() const { return name_; }
    // Ends the server with the signal and waits for it.
    void Kill(int signal);

private:
    std::string name_;
    pid_t pid_ = -1;
    bool ready_ = false;
};

// True when `jack_lsp -s name` lists the port.
bool PortExists(const std::string& server, const std::string& port);
// True when `jack_lsp -c` lists `other` among the connections of `port`.
bool PortsConnected(const std::string& server, const std::string& port, const std::string& other);

} // namespace vocato::test
