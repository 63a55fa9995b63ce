#include "AudioThread.h"

namespace vocato::media {
namespace {

thread_local bool onAudioThread = false;

} // namespace

bool OnAudioThread() noexcept { return onAudioThread; }

AudioThreadScope::AudioThreadScope() noexcept : outer_(onAudioThread) { onAudioThread = true; }

AudioThreadScope::~AudioThreadScope() { onAudioThread = outer_; }

} // namespace vocato::media
