#include "Preferences.h"

#include "Diagnostics.h"
#include "MessageText.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vocato {

TPreferences* prefs = nullptr;

namespace {

// Settings files are a few hundred bytes; anything far larger is not ours.
constexpr off_t kMaxFileSize = 1 << 20;

template <class T, class Finder>
T GetTyped(const Message& store, const char* key, T fallback, T* out, Finder find) {
    if ((store.*find)(key, out, 0) != B_OK) {
        *out = fallback;
    }
    return *out;
}

status_t ReadWholeFile(const std::string& path, std::string* text) {
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return errno == ENOENT ? B_ENTRY_NOT_FOUND : B_IO_ERROR;
    }
    struct stat info {};
    status_t status = B_OK;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        status = B_IO_ERROR;
    } else if (info.st_size > kMaxFileSize) {
        status = B_BAD_DATA;
    }
    char chunk[4096];
    while (status == B_OK) {
        ssize_t got = ::read(fd, chunk, sizeof chunk);
        if (got == 0) {
            break;
        }
        if (got < 0 && errno != EINTR) {
            status = B_IO_ERROR;
        } else if (got > 0) {
            text->append(chunk, size_t(got));
            status = off_t(text->size()) > kMaxFileSize ? B_BAD_DATA : B_OK;
        }
    }
    ::close(fd);
    return status;
}

bool WriteAll(int fd, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        ssize_t wrote = ::write(fd, text.data() + done, text.size() - done);
        if (wrote < 0 && errno != EINTR) {
            return false;
        }
        done += wrote > 0 ? size_t(wrote) : 0;
    }
    return true;
}

// mkdir -p for the settings directory.
bool MakeDirectories(const std::string& directory) {
    for (size_t slash = directory.find('/', 1);; slash = directory.find('/', slash + 1)) {
        std::string prefix = directory.substr(0, slash);
        if (::mkdir(prefix.c_str(), 0755) != 0 && errno != EEXIST) {
            return false;
        }
        if (slash == std::string::npos) {
            return true;
        }
    }
}

} // namespace

std::string SettingsDirectory() {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    if (config != nullptr && config[0] == '/') {
        return std::string(config) + "/Vocato";
    }
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/') {
        return std::string(home) + "/.config/Vocato";
    }
    return {};
}

TPreferences::TPreferences(const char* fileName) : Message(FourCC("pref")) {
    std::string directory = SettingsDirectory();
    if (directory.empty()) {
        status_ = B_ENTRY_NOT_FOUND;
        return;
    }
    path_ = directory + "/" + fileName;
    status_ = Load();
    if (status_ == B_BAD_DATA) {
        // The next save would replace the file; keep the user's old one for a look.
        std::string kept = path_ + ".damaged";
        bool moved = ::rename(path_.c_str(), kept.c_str()) == 0;
        std::fprintf(stderr, "Vocato: the settings file %s is damaged; using the defaults%s%s\n",
                     path_.c_str(), moved ? ", old file kept as " : "", moved ? kept.c_str() : "");
    }
}

TPreferences::~TPreferences() {
    Save();
}

status_t TPreferences::Load() {
    std::string text;
    status_t status = ReadWholeFile(path_, &text);
    return status == B_OK ? MessageFromText(text, this) : status;
}

status_t TPreferences::Save() const {
    if (path_.empty()) {
        return B_ENTRY_NOT_FOUND;
    }
    std::string directory = path_.substr(0, path_.rfind('/'));
    if (!MakeDirectories(directory)) {
        return B_IO_ERROR;
    }
    std::string temporary = path_ + ".XXXXXX";
    int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) {
        return B_IO_ERROR;
    }
    std::string text =
        "# Vocato settings, rewritten whenever Vocato quits\n" + MessageToText(*this);
    bool written = WriteAll(fd, text) && ::fsync(fd) == 0;
    written = ::close(fd) == 0 && written;
    if (!written || ::rename(temporary.c_str(), path_.c_str()) != 0) {
        ::unlink(temporary.c_str());
        return B_IO_ERROR;
    }
    return B_OK;
}

bool TPreferences::GetBool(const char* key, bool fallback, bool* out) const {
    return GetTyped(*this, key, fallback, out, &Message::FindBool);
}
int8_t TPreferences::GetInt8(const char* key, int8_t fallback, int8_t* out) const {
    return GetTyped(*this, key, fallback, out, &Message::FindInt8);
}
int16_t TPreferences::GetInt16(const char* key, int16_t fallback, int16_t* out) const {
    return GetTyped(*this, key, fallback, out, &Message::FindInt16);
}
int32_t TPreferences::GetInt32(const char* key, int32_t fallback, int32_t* out) const {
    return GetTyped(*this, key, fallback, out, &Message::FindInt32);
}
int64_t TPreferences::GetInt64(const char* key, int64_t fallback, int64_t* out) const {
    return GetTyped(*this, key, fallback, out, &Message::FindInt64);
}
float TPreferences::GetFloat(const char* key, float fallback, float* out) const {
    return GetTyped(*this, key, fallback, out, &Message::FindFloat);
}
double TPreferences::GetDouble(const char* key, double fallback, double* out) const {
    return GetTyped(*this, key, fallback, out, &Message::FindDouble);
}
Point TPreferences::GetPoint(const char* key, Point fallback, Point* out) const {
    return GetTyped(*this, key, fallback, out, &Message::FindPoint);
}
Rect TPreferences::GetRect(const char* key, Rect fallback, Rect* out) const {
    return GetTyped(*this, key, fallback, out, &Message::FindRect);
}

Message TPreferences::GetMessage(const char* key, Message fallback, Message* out) const {
    if (FindMessage(key, out) != B_OK) {
        *out = std::move(fallback);
    }
    return *out;
}

char* TPreferences::GetString(const char* key, const char* fallback, char* buffer,
                              size_t size) const {
    media::Diagnostic("Name %s\n", key);
    if (size == 0) {
        return buffer;
    }
    std::string found;
    const char* text = FindString(key, &found) == B_OK ? found.c_str() : fallback;
    size_t length = text == nullptr ? 0 : std::min(std::strlen(text), size - 1);
    std::memcpy(buffer, text, length);
    buffer[length] = '\0';
    return buffer;
}

status_t TPreferences::GetFlat(const char* key, const Flattenable& fallback,
                               Flattenable* out) const {
    if (HasValue(key, FieldType::Data)) {
        return FindFlat(key, out);
    }
    return out->Unflatten(fallback.TypeCode(), fallback.Flatten());
}

status_t TPreferences::Set(const char* key, FieldType type, Value value) {
    if (HasValue(key, type)) {
        return ReplaceValue(key, type, 0, std::move(value));
    }
    return AddValue(key, type, std::move(value));
}

status_t TPreferences::SetBool(const char* key, bool value) {
    return Set(key, FieldType::Bool, value);
}
status_t TPreferences::SetInt8(const char* key, int8_t value) {
    return Set(key, FieldType::Int8, value);
}
status_t TPreferences::SetInt16(const char* key, int16_t value) {
    return Set(key, FieldType::Int16, value);
}
status_t TPreferences::SetInt32(const char* key, int32_t value) {
    return Set(key, FieldType::Int32, value);
}
status_t TPreferences::SetInt64(const char* key, int64_t value) {
    return Set(key, FieldType::Int64, value);
}
status_t TPreferences::SetFloat(const char* key, float value) {
    return Set(key, FieldType::Float, value);
}
status_t TPreferences::SetDouble(const char* key, double value) {
    return Set(key, FieldType::Double, value);
}
status_t TPreferences::SetPoint(const char* key, Point value) {
    return Set(key, FieldType::Point, value);
}
status_t TPreferences::SetRect(const char* key, Rect value) {
    return Set(key, FieldType::Rect, value);
}
status_t TPreferences::SetString(const char* key, const char* value) {
    return Set(key, FieldType::String, std::string(value == nullptr ? "" : value));
}
status_t TPreferences::SetMessage(const char* key, const Message* value) {
    return Set(key, FieldType::Message, std::make_shared<const Message>(*value));
}

status_t TPreferences::SetFlat(const char* key, const Flattenable* value) {
    // A stored object of another type code counts as another type.
    const Value* stored = nullptr;
    if (FindValue(key, FieldType::Data, 0, &stored) == B_OK && !HasFlat(key, *value)) {
        return B_BAD_TYPE;
    }
    return Set(key, FieldType::Data, FlatData{value->TypeCode(), value->Flatten()});
}

} // namespace vocato
