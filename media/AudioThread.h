// Marks the stretch of a thread that runs real-time audio work, so that code which must never
// run there (and tests that police it) can tell.
#pragma once

namespace vocato::media {

// Any thread. True between the construction and destruction of an AudioThreadScope.
bool OnAudioThread() noexcept;

class AudioThreadScope {
public:
    AudioThreadScope() noexcept;
    ~AudioThreadScope();
    AudioThreadScope(const AudioThreadScope&) = delete;
    AudioThreadScope& operator=(const AudioThreadScope&) = delete;

private:
    bool outer_;
};

} // namespace vocato::media
