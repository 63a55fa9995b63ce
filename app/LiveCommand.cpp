#include "LiveCommand.h"

#include "Diagnostics.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <pthread.h>
#include <thread>

namespace vocato::app {
namespace {

std::atomic<bool> stopRequested{false};

extern "C" void RequestStop(int) { stopRequested.store(true); }

// A stop signal handled while JACK activates the client interrupts the server's reply, and the
// session would fail to start. Held back (SIG_BLOCK) until the session runs (SIG_UNBLOCK), it
// stops it cleanly instead; the threads started meanwhile inherit the mask, so a signal never
// lands on the audio thread.
void MaskStopSignals(int how) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(how, &signals, nullptr);
}

void CatchStopSignals() {
    struct sigaction action {};
    action.sa_handler = &RequestStop;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

} // namespace

int RunLive(const LiveOptions& o) {
    media::SetDiagnosticsQuiet(o.quiet);
    LiveSettings settings = o.settings;
    settings.audio.synth = !o.noSynth;
    stopRequested = false;
    MaskStopSignals(SIG_BLOCK);
    CatchStopSignals();
    media::StderrAlert alert;
    LiveSession session(settings, alert);

    std::string report;
    const bool playing = session.Start(report);
    MaskStopSignals(SIG_UNBLOCK);
    if (!o.quiet || !playing) {
        std::fprintf(stderr, "%s", report.c_str());
    }
    if (!playing) {
        std::fprintf(stderr, "vocato live: nothing to play\n");
        return 1;
    }
    if (!o.quiet) {
        std::fprintf(stderr, "Running; Ctrl-C stops.\n");
    }
    const bool file = !settings.file.empty();
    while (!stopRequested.load() && !(file && session.FileFinished())) {
        session.Tick(stdout, stderr);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    session.Tick(stdout, stderr);
    session.Stop();
    session.Tick(stdout, stderr); // the notes the stop ended
    if (!o.quiet) {
        std::fprintf(stderr, "Stopped; every note ended.\n");
    }
    return 0;
}

} // namespace vocato::app
