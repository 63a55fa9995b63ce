#include "SoundFileReader.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vocato::media {

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
    sf_command(file, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    SoundFileInfo info;
    info.sampleRate = sfInfo.samplerate;
    info.channels = static_cast<uint32_t>(sfInfo.channels);
    info.frames = sfInfo.frames;
    return std::unique_ptr<SoundFileReader>(new SoundFileReader(file, info));
}

SoundFileReader::~SoundFileReader() { sf_close(file_); }

size_t SoundFileReader::Read(int16_t* interleaved, size_t frames) noexcept {
    const sf_count_t n = sf_readf_short(file_, interleaved, static_cast<sf_count_t>(frames));
    return n > 0 ? static_cast<size_t>(n) : 0;
}

} // namespace vocato::media
