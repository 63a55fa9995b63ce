// Vocato's JACK client: one audio input for the voice, one MIDI output, two audio outputs
// for the synthesizer. The process callback hands each period to a handler and does nothing
// else; everything that may block (connections, port look-ups, reports) happens on the
// owner's thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

typedef struct _jack_client jack_client_t;
typedef struct _jack_port jack_port_t;

namespace vocato::media {

struct JackPeriod {
    const float* input;
    float* left;    // synthesizer outputs
    float* right;
    void* midiOut;  // the MIDI port's buffer, already cleared
    uint32_t frames;
};

class JackPeriodHandler {
public:
    virtual ~JackPeriodHandler() = default;
    // JACK process thread; never allocates, locks, blocks or logs.
    virtual void Period(const JackPeriod& period) noexcept = 0;
};

class JackClient {
public:
    struct Options {
        std::string clientName = "Vocato";
        std::string serverName; // empty: $JACK_DEFAULT_SERVER, else the default server
    };

    // Not the audio thread. Opens the client without ever starting a server; null with one
    // sentence in `error` when no server answers or the ports cannot be made.
    static std::unique_ptr<JackClient> Open(const Options& options, JackPeriodHandler& handler,
                                            std::string& error);
    ~JackClient();
    JackClient(const JackClient&) = delete;
    JackClient& operator=(const JackClient&) = delete;

    // Not the audio thread. Starts the process callback.
    bool Activate(std::string& error);

    // Not the audio thread. Connects the input to the first system capture port and the
    // synthesizer to the first two playback ports. A server that refuses is not an error:
    // the returned sentence says what could not be connected (empty when all went well).
    std::string ConnectSystemPorts();

    // Not the audio thread. Connects the MIDI output to the named MIDI input port; false
    // when no such port exists or the server refuses.
    bool ConnectMidiTo(const std::string& port);

    // Not the audio thread. Full names of the other clients' audio outputs that could feed the
    // input, physical capture ports first; empty once the client is lost.
    std::vector<std::string> InputSources() const;
    // Not the audio thread. Full names of the ports connected to the input now.
    std::vector<std::string> InputConnections() const;
    // Not the audio thread. Connects or disconnects one of the InputSources to the input;
    // true when the port is then connected (or disconnected) as asked, even if it already was.
    bool ConnectInput(const std::string& source);
    bool DisconnectInput(const std::string& source);

    // Any thread.
    uint32_t SampleRate() const noexcept { return rate_.load(std::memory_order_relaxed); }
    uint32_t BufferSize() const noexcept { return bufferSize_.load(std::memory_order_relaxed); }
    uint64_t Xruns() const noexcept { return xruns_.load(std::memory_order_relaxed); }
    uint64_t Cycles() const noexcept { return cycles_.load(std::memory_order_acquire); }
    // True once the server has gone or has thrown the client out; the client is then dead
    // and only good for closing.
    bool Lost() const noexcept { return lost_.load(std::memory_order_acquire); }
    // Not the audio thread; meaningful once Lost().
    std::string LostReason() const;
    // Not the audio thread. The server's DSP load in percent.
    float CpuLoad() const;

    // Full port names ("Vocato:input"), for connecting from outside.
    std::string InputPortName() const;
    std::string MidiPortName() const;
    std::string LeftPortName() const;
    std::string RightPortName() const;

private:
    explicit JackClient(JackPeriodHandler& handler) : handler_(handler) {}
    static int Process(uint32_t frames, void* self) noexcept;
    static int SampleRateChanged(uint32_t rate, void* self) noexcept;
    static int BufferSizeChanged(uint32_t frames, void* self) noexcept;
    static int Xrun(void* self) noexcept;
    static void Shutdown(int code, const char* reason, void* self) noexcept;
    friend struct JackCallbacks;
    jack_port_t* InputSource(const std::string& name) const;

    JackPeriodHandler& handler_;
    jack_client_t* client_ = nullptr;
    jack_port_t* input_ = nullptr;
    jack_port_t* midiOut_ = nullptr;
    jack_port_t* left_ = nullptr;
    jack_port_t* right_ = nullptr;
    std::atomic<uint32_t> rate_{0};
    std::atomic<uint32_t> bufferSize_{0};
    std::atomic<uint64_t> xruns_{0};
    std::atomic<uint64_t> cycles_{0};
    std::atomic<bool> lost_{false};
    char lostReason_[256] = {};
};

} // namespace vocato::media
