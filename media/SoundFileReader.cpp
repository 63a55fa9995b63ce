#include "SoundFileReader.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vocato::media {

namespace {
constexpr size_t kScratchFrames = 4096;
} // namespace

std::unique_ptr<SoundFileReader> SoundFileReader::Open(const std::string& path,
                                                       std::string& error) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        error = path + ": " + std::strerror(errno);
        return nullptr;
    }
    if (S_ISDIR(status.st_mode)) {
        error = path + ": is a directory, not a sound file";
        return nullptr;
    }
    // Opening it ourselves gives the system's own reason (permission denied, ...) instead of
    // libsndfile's generic one.
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0) {
        error = path + ": " + std::strerror(errno);
        return nullptr;
    }
    if (status.st_size == 0) {
        ::close(fd);
        error = path + ": the file is empty";
        return nullptr;
    }
    SF_INFO sfInfo{};
    SNDFILE* file = sf_open_fd(fd, SFM_READ, &sfInfo, SF_TRUE);
    if (file == nullptr) {
        error = path + ": not a sound file that can be read (" + sf_strerror(nullptr) + ")";
        return nullptr;
    }
    if (sfInfo.channels <= 0 || sfInfo.samplerate <= 0 || sfInfo.frames <= 0) {
        sf_close(file);
        error = path + ": the file holds no audio";
        return nullptr;
    }
    SoundFileInfo info;
    info.sampleRate = sfInfo.samplerate;
    info.channels = static_cast<uint32_t>(sfInfo.channels);
    info.frames = sfInfo.frames;
    const int subtype = sfInfo.format & SF_FORMAT_SUBMASK;
    const bool floating = subtype == SF_FORMAT_FLOAT || subtype == SF_FORMAT_DOUBLE;
    return std::unique_ptr<SoundFileReader>(new SoundFileReader(file, info, floating));
}

SoundFileReader::SoundFileReader(SNDFILE* file, const SoundFileInfo& info, bool floating)
    : file_(file), info_(info), floating_(floating) {
    if (floating_) {
        scratch_.resize(kScratchFrames * info_.channels);
    }
}

SoundFileReader::~SoundFileReader() {
    sf_close(file_);
}

size_t SoundFileReader::Read(int16_t* interleaved, size_t frames) noexcept {
    if (floating_) {
        return ReadFloating(interleaved, frames);
    }
    const sf_count_t n = sf_readf_short(file_, interleaved, static_cast<sf_count_t>(frames));
    return n > 0 ? static_cast<size_t>(n) : 0;
}

size_t SoundFileReader::ReadFloating(int16_t* interleaved, size_t frames) noexcept {
    size_t done = 0;
    while (done < frames) {
        const size_t want = std::min(frames - done, kScratchFrames);
        const sf_count_t n = sf_readf_float(file_, scratch_.data(), static_cast<sf_count_t>(want));
        if (n <= 0) {
            break;
        }
        const size_t samples = static_cast<size_t>(n) * info_.channels;
        int16_t* out = interleaved + done * info_.channels;
        for (size_t i = 0; i < samples; ++i) {
            // Full scale is 32768, as for the integer formats; beyond it the sample clips.
            const float v = std::clamp(scratch_[i] * 32768.0f, -32768.0f, 32767.0f);
            out[i] = static_cast<int16_t>(std::lrint(v));
        }
        done += static_cast<size_t>(n);
    }
    return done;
}

} // namespace vocato::media
