#pragma once

#include "Message.h"

#include <cstddef>
#include <string>

namespace vocato {

// "$XDG_CONFIG_HOME/Vocato", or "$HOME/.config/Vocato" when XDG_CONFIG_HOME is
// unset or not absolute; empty when neither variable helps.
std::string SettingsDirectory();

// The user's settings between runs: a message whose fields are the settings,
// read from its file once at construction and written back when destroyed.
// A missing or damaged file leaves the store empty, so every getter yields the
// default its caller passes; a damaged file is moved aside to "<file>.damaged"
// before it could be overwritten. There is no lock: its users touch it at distinct
// moments (construction of a window or the node, a menu choice, a view's end).
class TPreferences final : public Message {
public:
    // Reads SettingsDirectory()/fileName.
    explicit TPreferences(const char* fileName);
    // Saves; a failure is silent, as the user can do nothing about it at exit.
    ~TPreferences();

    TPreferences(const TPreferences&) = delete;
    TPreferences& operator=(const TPreferences&) = delete;

    // B_OK when the file was read, else the error of the step that failed.
    status_t Status() const { return status_; }
    const std::string& Path() const { return path_; }

    // Writes a temporary file beside the settings file and renames it over it,
    // so that a crash leaves either the old file or the new one, never a torn one.
    status_t Save() const;

    // Each getter stores the value under `key` in `*out`, or `fallback` when the
    // key is missing or holds another type, and returns `*out`.
    bool GetBool(const char* key, bool fallback, bool* out) const;
    int8_t GetInt8(const char* key, int8_t fallback, int8_t* out) const;
    int16_t GetInt16(const char* key, int16_t fallback, int16_t* out) const;
    int32_t GetInt32(const char* key, int32_t fallback, int32_t* out) const;
    int64_t GetInt64(const char* key, int64_t fallback, int64_t* out) const;
    float GetFloat(const char* key, float fallback, float* out) const;
    double GetDouble(const char* key, double fallback, double* out) const;
    Point GetPoint(const char* key, Point fallback, Point* out) const;
    Rect GetRect(const char* key, Rect fallback, Rect* out) const;
    Message GetMessage(const char* key, Message fallback, Message* out) const;
    // Copies at most size - 1 bytes and always terminates; returns buffer.
    char* GetString(const char* key, const char* fallback, char* buffer, size_t size) const;
    // Unflattens the stored object into `out`, or the default when nothing of
    // that name is stored; returns what `out` said about the bytes.
    status_t GetFlat(const char* key, const Flattenable& fallback, Flattenable* out) const;

    // Each setter replaces the value under `key` or adds it; a key that holds
    // another type is left alone and B_BAD_TYPE returned.
    status_t SetBool(const char* key, bool value);
    status_t SetInt8(const char* key, int8_t value);
    status_t SetInt16(const char* key, int16_t value);
    status_t SetInt32(const char* key, int32_t value);
    status_t SetInt64(const char* key, int64_t value);
    status_t SetFloat(const char* key, float value);
    status_t SetDouble(const char* key, double value);
    status_t SetPoint(const char* key, Point value);
    status_t SetRect(const char* key, Rect value);
    status_t SetString(const char* key, const char* value);
    status_t SetMessage(const char* key, const Message* value);
    status_t SetFlat(const char* key, const Flattenable* value);

private:
    status_t Load();
    status_t Set(const char* key, FieldType type, Value value);

    std::string path_;
    status_t status_ = B_OK;
};

// The run's settings store; null where no `main` created one (the control-panel
// role, the plugin).
extern TPreferences* prefs;

} // namespace vocato
