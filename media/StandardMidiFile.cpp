#include "StandardMidiFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vocato::media {
namespace {

void PutBigEndian(std::vector<uint8_t>& out, uint32_t value, int bytes) {
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
        out.push_back(static_cast<uint8_t>(value >> shift));
    }
}

// Variable-length quantity: 7 bits per byte, most significant first, high bit on all but
// the last byte.
void PutVarLen(std::vector<uint8_t>& out, uint32_t value) {
    uint8_t groups[5];
    int n = 0;
    do {
        groups[n++] = static_cast<uint8_t>(value & 0x7F);
        value >>= 7;
    } while (value != 0);
    while (n > 1) {
        out.push_back(static_cast<uint8_t>(groups[--n] | 0x80));
    }
    out.push_back(groups[0]);
}

std::vector<uint8_t> EncodeTrack(const MidiStore& store) {
    std::vector<uint8_t> track;
    PutVarLen(track, 0);
    track.insert(track.end(), {0xFF, 0x51, 0x03});
    PutBigEndian(track, kSmfMicrosPerQuarter, 3);
    uint32_t previous = 0;
    for (const StoredEvent& event : store.SortedEvents()) {
        PutVarLen(track, event.stampMs - previous);
        previous = event.stampMs;
        track.insert(track.end(), event.message.bytes, event.message.bytes + event.message.size);
    }
    PutVarLen(track, 0);
    track.insert(track.end(), {0xFF, 0x2F, 0x00});
    return track;
}

std::string DirectoryOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

ExportResult Failure(const std::string& path, const char* what, int error) {
    return {false, "cannot write " + path + ": " + what + ": " + std::strerror(error)};
}

bool WriteAll(int fd, const std::vector<uint8_t>& bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            if (n == 0) {
                errno = EIO;
            }
            return false;
        }
        done += static_cast<size_t>(n);
    }
    return true;
}

} // namespace

std::vector<uint8_t> EncodeStandardMidiFile(const MidiStore& store) {
    std::vector<uint8_t> file = {'M', 'T', 'h', 'd'};
    PutBigEndian(file, 6, 4);
    PutBigEndian(file, 0, 2); // format 0
    PutBigEndian(file, 1, 2); // one track
    PutBigEndian(file, kSmfTicksPerQuarter, 2);
    const std::vector<uint8_t> track = EncodeTrack(store);
    file.insert(file.end(), {'M', 'T', 'r', 'k'});
    PutBigEndian(file, static_cast<uint32_t>(track.size()), 4);
    file.insert(file.end(), track.begin(), track.end());
    return file;
}

ExportResult ExportStandardMidiFile(const MidiStore& store, const std::string& path) {
    struct stat target {};
    if (::stat(path.c_str(), &target) == 0 && S_ISDIR(target.st_mode)) {
        return {false, "cannot write " + path + ": it is a directory"};
    }
    std::string temp = DirectoryOf(path) + "/.vocato-export-XXXXXX";
    const int fd = ::mkstemp(temp.data());
    if (fd < 0) {
        return Failure(path, "cannot create a file in its directory", errno);
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd, 0666 & ~mask);

    const std::vector<uint8_t> bytes = EncodeStandardMidiFile(store);
    const char* step = nullptr;
    int error = 0;
    if (!WriteAll(fd, bytes)) {
        step = "writing failed";
        error = errno;
    } else if (::fsync(fd) != 0) {
        step = "flushing to disk failed";
        error = errno;
    }
    if (::close(fd) != 0 && step == nullptr) {
        step = "closing failed";
        error = errno;
    }
    if (step != nullptr) {
        ::unlink(temp.c_str());
        return Failure(path, step, error);
    }
    if (::rename(temp.c_str(), path.c_str()) != 0) {
        const int error = errno;
        ::unlink(temp.c_str());
        return Failure(path, "renaming into place failed", error);
    }
    return {true, {}};
}

} // namespace vocato::media
