// Chooses the one producer that feeds the converter node, connects it, starts and stops it,
// and turns sound files into producers: the live input normally, a sound file when one is
// chosen, started and stopped by PlayWave and StopWave. The window's part of it, without
// the window: the window (or `vocato live`) drives it and shows its state.
//
// Threads: every operation runs on the owner's thread. A producer runs the node on its own
// thread only between its start and its stop, so the node is never used by two at once.
#pragma once

#include "LiveMidiRouter.h"

#include "Alert.h"
#include "Producer.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vocato {
class VocatoNode;
}

namespace vocato::app {

// A producer or the converter node, known by its node id; -1 is no node.
struct NodeRef {
    int32_t node = -1;
    bool operator==(const NodeRef&) const = default;
};

struct Connection {
    NodeRef producer;       // the system audio input
    NodeRef fileProducer;   // the file reader of the chosen sound file
    NodeRef activeProducer; // the producer connected now, or last
    NodeRef consumer;       // the converter node
    media::MediaSource source;
    media::MediaDestination destination;
    media::MediaFormat format;
};

class ProducerConnector {
public:
    // `liveInput`, `node`, `router` and `alert` outlive the connector; `router` may be null.
    ProducerConnector(media::Producer& liveInput, VocatoNode& node, LiveMidiRouter* router,
                      media::Alert& alert);
    // Tears the connection down and releases the active producer.
    ~ProducerConnector();
    ProducerConnector(const ProducerConnector&) = delete;
    ProducerConnector& operator=(const ProducerConnector&) = delete;

    bool ConnectToNode(NodeRef* producer);
    bool ChangeProducer(NodeRef producer);
    bool NodeFile(const std::string& ref, NodeRef& out);
    void PlayWave();
    void StopWave();
    void StopNodes();
    // A sound file dropped or opened: made a producer and connected, not started.
    bool OpenFile(const std::string& path);

    // The producer behind a node id; null once it has been released.
    media::Producer* Find(NodeRef ref) const;
    // How many producers were released, and how many releases found nothing to release.
    int Releases() const noexcept { return releases_; }
    int ReleasesOfNothing() const noexcept { return releasesOfNothing_; }

    Connection connection;
    bool connected = false;
    bool running = false;
    bool needStartTime = false;
    int64_t startTime = 0;
    bool liveInput = true;
    bool fileLoaded = false;
    std::string fileRef;
    std::string waveFileName;
    // The main view's PlayWave button.
    bool playWaveValue = false;
    bool playWaveEnabled = false;

private:
    class NodeInput;

    void Failure(const char* text);
    void ReleaseNode(NodeRef ref);
    bool ConnectNodes(media::Producer& producer, media::MediaFormat* format);
    void DisconnectNodes();
    void EndNotes();
    int64_t Now() const;

    media::Producer& live_;
    VocatoNode& node_;
    LiveMidiRouter* router_;
    media::Alert& alert_;
    std::unique_ptr<NodeInput> nodeInput_;
    std::vector<std::unique_ptr<media::Producer>> files_;
    bool releasedByChange_ = false;
    int releases_ = 0;
    int releasesOfNothing_ = 0;
};

} // namespace vocato::app
