#include "ProducerConnector.h"

#include "VocatoNode.h"

#include "Clock.h"
#include "Diagnostics.h"
#include "SoundFileProducer.h"

#include <algorithm>

namespace vocato::app {

using media::Diagnostic;

class ProducerConnector::NodeInput final : public media::BufferConsumer {
public:
    explicit NodeInput(VocatoNode& node) : node_(node) {}
    void BufferReceived(media::Buffer& buffer) noexcept override { node_.BufferReceived(buffer); }

private:
    VocatoNode& node_;
};

ProducerConnector::ProducerConnector(media::Producer& liveInput, VocatoNode& node,
                                     LiveMidiRouter* router, media::Alert& alert)
    : live_(liveInput), node_(node), router_(router), alert_(alert),
      nodeInput_(std::make_unique<NodeInput>(node)) {
    connection.producer = {live_.NodeId()};
    connection.consumer = {0};
}

ProducerConnector::~ProducerConnector() {
    if (running) {
        StopNodes();
    }
    if (connected) {
        node_.Stop(0, true);
        EndNotes();
        DisconnectNodes();
    }
    if (connection.activeProducer != connection.producer) {
        ReleaseNode(connection.activeProducer);
    }
}

media::Producer* ProducerConnector::Find(NodeRef ref) const {
    if (ref == connection.producer) {
        return &live_;
    }
    for (const auto& file : files_) {
        if (file->NodeId() == ref.node) {
            return file.get();
        }
    }
    return nullptr;
}

void ProducerConnector::Failure(const char* text) { alert_.Show("FATAL ERROR", text); }

void ProducerConnector::ReleaseNode(NodeRef ref) {
    if (ref == NodeRef{}) {
        return; // no producer was ever active
    }
    const auto found = std::find_if(files_.begin(), files_.end(),
                                    [ref](const auto& p) { return p->NodeId() == ref.node; });
    if (found == files_.end()) {
        ++releasesOfNothing_;
        return;
    }
    files_.erase(found);
    ++releases_;
}

int64_t ProducerConnector::Now() const { return media::SystemClock().NowMicros(); }

void ProducerConnector::EndNotes() {
    if (router_ != nullptr) {
        router_->Silence();
    }
}

bool ProducerConnector::ConnectNodes(media::Producer& producer, media::MediaFormat* format) {
    if (!producer.Connect(*nodeInput_, format)) {
        return false;
    }
    media::MediaInput input;
    if (node_.AcceptFormat(connection.destination, format) != media::kOk ||
        node_.Connected(connection.source, connection.destination, *format, &input) !=
            media::kOk) {
        producer.Disconnect();
        return false;
    }
    return true;
}

void ProducerConnector::DisconnectNodes() {
    if (media::Producer* producer = Find(connection.activeProducer)) {
        producer->Disconnect();
    }
    node_.Disconnected(connection.source, connection.destination);
}

bool ProducerConnector::ConnectToNode(NodeRef* producer) {
    connected = true;
    if (connection.activeProducer != connection.producer) {
        Diagnostic("le producer n'est pas live\n");
        if (connection.activeProducer != connection.fileProducer) {
            Diagnostic("le fileproducer est != du activeProducer\n");
            if (!releasedByChange_) {
                ReleaseNode(connection.activeProducer);
            }
        }
    }
    releasedByChange_ = false;
    connection.activeProducer = *producer;
    media::Producer* active = Find(connection.activeProducer);

    media::MediaSource source;
    const bool haveOutput = active != nullptr && active->GetFreeOutput(&source);
    if (!haveOutput) {
        Failure("unable to get a free output from the producer node");
    }
    int32_t cookie = 0;
    media::MediaInput input;
    if (node_.GetNextInput(&cookie, &input) != media::kOk) {
        Failure("unable to get a free input to Vocato");
    }
    connection.source = source;
    connection.destination = input.destination;

    media::MediaFormat format;
    format.type = media::MediaType::RawAudio;
    if (!haveOutput || !ConnectNodes(*active, &format)) {
        Failure("unable to connect nodes");
        connected = false;
        return false;
    }
    connection.format = format;

    const int64_t latency = active->Latency();
    Diagnostic("Setting producer run mode latency to %lld\n", static_cast<long long>(latency));
    if (connection.activeProducer != connection.fileProducer) {
        node_.Start(Now());
        active->Start(Now() + active->Latency());
        running = true;
    }
    return true;
}

bool ProducerConnector::ChangeProducer(NodeRef producer) {
    if (running) {
        StopNodes();
        running = false;
    }
    if (connected) {
        Diagnostic("Stop le consumer\n");
        node_.Stop(0, true);
        EndNotes();
        Diagnostic("Deconnecte les nodes\n");
        DisconnectNodes();
        Diagnostic("Détruit le producer\n");
        if (connection.activeProducer != connection.producer) {
            ReleaseNode(connection.activeProducer);
            releasedByChange_ = true;
        }
        connected = false;
    }
    needStartTime = true;
    return ConnectToNode(&producer);
}

bool ProducerConnector::NodeFile(const std::string& ref, NodeRef& out) {
    const bool sniffed = media::SoundFileProducer::CanRead(ref);
    if (!sniffed) {
        Failure("couldn't find file reader node\n");
    }
    auto node = sniffed ? std::make_unique<media::SoundFileProducer>() : nullptr;
    if (node == nullptr) {
        Failure("couldn't instantiate file reader node\n");
    }
    std::string error;
    if (node == nullptr || !node->SetFile(ref, error)) {
        Failure("unable to SetRefFor() to read that sound file!\n");
        return false;
    }
    Diagnostic("Node file ok\n");
    out = {node->NodeId()};
    files_.push_back(std::move(node));
    return true;
}

void ProducerConnector::PlayWave() {
    if (connection.activeProducer != connection.fileProducer || running) {
        return;
    }
    media::Producer* file = Find(connection.activeProducer);
    if (file == nullptr) {
        return;
    }
    if (needStartTime) {
        startTime = Now() + file->Latency();
        needStartTime = false;
    }
    file->Seek(0);
    Diagnostic("reftime%lld\n", static_cast<long long>(startTime));
    file->Start(startTime);
    playWaveValue = true;
    playWaveEnabled = false;
    running = true;
}

void ProducerConnector::StopWave() {
    if (!running) {
        return;
    }
    if (connection.activeProducer == connection.fileProducer) {
        StopNodes();
        playWaveValue = false;
        playWaveEnabled = true;
    }
    running = false;
}

void ProducerConnector::StopNodes() {
    if (media::Producer* active = Find(connection.activeProducer)) {
        active->Stop();
    }
    EndNotes();
}

bool ProducerConnector::OpenFile(const std::string& path) {
    NodeRef node;
    if (!NodeFile(path, node)) {
        return false;
    }
    StopWave();
    connection.fileProducer = node;
    ChangeProducer(connection.fileProducer);
    fileLoaded = true;
    fileRef = path;
    const size_t slash = path.find_last_of('/');
    waveFileName = path.substr(slash == std::string::npos ? 0 : slash + 1).substr(0, 127);
    return true;
}

} // namespace vocato::app
