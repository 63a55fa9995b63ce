#include "VocatoAddOn.h"

#include "Diagnostics.h"

namespace vocato {
namespace {

const FlavorInfo& Flavor() {
    static const FlavorInfo flavor = [] {
        FlavorInfo f;
        f.name = "Vocato";
        f.info = "Translate Audio stream into Midi stream";
        f.kinds = kBufferConsumer | kControllable;
        f.inFormat.type = media::MediaType::RawAudio;
        return f;
    }();
    return flavor;
}

} // namespace

VocatoAddOn::~VocatoAddOn() {
    media::DebugOutput("~VocatoAddOn()\n");
}

media::Status VocatoAddOn::InitCheck(const char**) const {
    return media::kOk;
}

media::Status VocatoAddOn::GetFlavorAt(int32_t n, const FlavorInfo** info) const {
    if (n != 0) {
        return media::kError;
    }
    *info = &Flavor();
    return media::kOk;
}

std::unique_ptr<VocatoNode> VocatoAddOn::InstantiateNodeFor(const FlavorInfo*,
                                                            NodeOptions options) {
    return std::make_unique<VocatoNode>(nullptr, this, "", 1, std::move(options));
}

} // namespace vocato

extern "C" vocato::VocatoAddOn* make_media_addon(int32_t image) {
    return new vocato::VocatoAddOn(image);
}
