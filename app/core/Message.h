#pragma once

#include "Status.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vocato {

// 'MRec' written as FourCC("MRec"): the first character is the most significant byte.
constexpr uint32_t FourCC(const char (&code)[5]) noexcept {
    return (uint32_t(uint8_t(code[0])) << 24) | (uint32_t(uint8_t(code[1])) << 16) |
           (uint32_t(uint8_t(code[2])) << 8) | uint32_t(uint8_t(code[3]));
}

struct Point {
    float x = 0;
    float y = 0;
    bool operator==(const Point&) const = default;
};

// Inclusive pixel rectangle: (0, 0) - (34, 24) covers 35 x 25 pixels.
struct Rect {
    float left = 0;
    float top = 0;
    float right = 0;
    float bottom = 0;
    float Width() const { return right - left; }
    float Height() const { return bottom - top; }
    bool operator==(const Rect&) const = default;
};

// An object stored as its type code and its flattened bytes.
struct FlatData {
    uint32_t type = 0;
    std::vector<uint8_t> bytes;
    bool operator==(const FlatData&) const = default;
};

class Flattenable {
public:
    virtual ~Flattenable() = default;
    virtual uint32_t TypeCode() const = 0;
    virtual std::vector<uint8_t> Flatten() const = 0;
    virtual status_t Unflatten(uint32_t type, std::span<const uint8_t> bytes) = 0;
};

class Message;

// The order of the enumerators is the order of the alternatives of Message::Value.
enum class FieldType : uint8_t {
    Bool,
    Int8,
    Int16,
    Int32,
    Int64,
    Float,
    Double,
    String,
    Point,
    Rect,
    Message,
    Data,
};

// A `what` code plus named fields in the order they were added; each field has
// one type and holds one or more values of it. Item messages, the window's
// dispatch, button archives and the settings store all use this one type.
class Message {
public:
    // Nested messages are shared and never changed in place, so copies stay independent.
    using Value = std::variant<bool, int8_t, int16_t, int32_t, int64_t, float, double, std::string,
                               Point, Rect, std::shared_ptr<const Message>, FlatData>;

    struct Field {
        std::string name;
        FieldType type;
        std::vector<Value> values;
        bool operator==(const Field& other) const;
    };

    explicit Message(uint32_t what = 0) : what(what) {}

    uint32_t what;

    const std::vector<Field>& Fields() const { return fields_; }
    int32_t CountNames() const { return int32_t(fields_.size()); }
    bool IsEmpty() const { return fields_.empty(); }
    status_t GetInfo(std::string_view name, FieldType* type, int32_t* count) const;
    status_t RemoveName(std::string_view name);
    bool operator==(const Message& other) const;

    // Adds a value to the field `name`, creating it; B_BAD_TYPE when the name
    // already holds values of another type.
    status_t AddValue(std::string_view name, FieldType type, Value value);
    // The value at `index` of the field `name`, when that field has the type asked for.
    status_t FindValue(std::string_view name, FieldType type, int32_t index,
                       const Value** out) const;
    // Replace and Has take the type as an argument: ReplaceValue("_color",
    // FieldType::Int32, 1, int32_t(128)), HasValue("Preset", FieldType::Int8).
    status_t ReplaceValue(std::string_view name, FieldType type, int32_t index, Value value);
    bool HasValue(std::string_view name, FieldType type, int32_t index = 0) const;

    status_t AddBool(std::string_view n, bool v) { return AddValue(n, FieldType::Bool, v); }
    status_t AddInt8(std::string_view n, int8_t v) { return AddValue(n, FieldType::Int8, v); }
    status_t AddInt16(std::string_view n, int16_t v) { return AddValue(n, FieldType::Int16, v); }
    status_t AddInt32(std::string_view n, int32_t v) { return AddValue(n, FieldType::Int32, v); }
    status_t AddInt64(std::string_view n, int64_t v) { return AddValue(n, FieldType::Int64, v); }
    status_t AddFloat(std::string_view n, float v) { return AddValue(n, FieldType::Float, v); }
    status_t AddDouble(std::string_view n, double v) { return AddValue(n, FieldType::Double, v); }
    status_t AddString(std::string_view n, std::string_view v) {
        return AddValue(n, FieldType::String, std::string(v));
    }
    status_t AddPoint(std::string_view n, Point v) { return AddValue(n, FieldType::Point, v); }
    status_t AddRect(std::string_view n, Rect v) { return AddValue(n, FieldType::Rect, v); }
    status_t AddMessage(std::string_view n, const Message& v) {
        return AddValue(n, FieldType::Message, std::make_shared<const Message>(v));
    }
    status_t AddData(std::string_view n, FlatData v) {
        return AddValue(n, FieldType::Data, std::move(v));
    }

    status_t FindBool(std::string_view n, bool* out, int32_t i = 0) const;
    status_t FindInt8(std::string_view n, int8_t* out, int32_t i = 0) const;
    status_t FindInt16(std::string_view n, int16_t* out, int32_t i = 0) const;
    status_t FindInt32(std::string_view n, int32_t* out, int32_t i = 0) const;
    status_t FindInt64(std::string_view n, int64_t* out, int32_t i = 0) const;
    status_t FindFloat(std::string_view n, float* out, int32_t i = 0) const;
    status_t FindDouble(std::string_view n, double* out, int32_t i = 0) const;
    status_t FindString(std::string_view n, std::string* out, int32_t i = 0) const;
    status_t FindPoint(std::string_view n, Point* out, int32_t i = 0) const;
    status_t FindRect(std::string_view n, Rect* out, int32_t i = 0) const;
    status_t FindMessage(std::string_view n, Message* out, int32_t i = 0) const;
    status_t FindData(std::string_view n, FlatData* out, int32_t i = 0) const;
    // Hands the stored bytes to `out`, which decides whether it accepts their type code.
    status_t FindFlat(std::string_view n, Flattenable* out, int32_t i = 0) const;

    // True when the field holds flattened data of the object's own type code.
    bool HasFlat(std::string_view n, const Flattenable& object, int32_t i = 0) const;

private:
    const Field* FindField(std::string_view name) const;
    Field* FindField(std::string_view name);

    std::vector<Field> fields_;
};

} // namespace vocato
