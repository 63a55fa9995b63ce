#include "Message.h"

#include <algorithm>
#include <utility>

namespace vocato {

static_assert(
    std::is_same_v<std::variant_alternative_t<size_t(FieldType::Int8), Message::Value>, int8_t>);
static_assert(std::is_same_v<std::variant_alternative_t<size_t(FieldType::String), Message::Value>,
                             std::string>);
static_assert(
    std::is_same_v<std::variant_alternative_t<size_t(FieldType::Data), Message::Value>, FlatData>);

namespace {

bool ValuesEqual(const Message::Value& a, const Message::Value& b) {
    if (a.index() != b.index()) {
        return false;
    }
    if (const auto* nested = std::get_if<std::shared_ptr<const Message>>(&a)) {
        return **nested == *std::get<std::shared_ptr<const Message>>(b);
    }
    return a == b;
}

template <class T>
status_t FindTyped(const Message& message, std::string_view name, FieldType type, int32_t index,
                   T* out) {
    const Message::Value* value = nullptr;
    status_t status = message.FindValue(name, type, index, &value);
    if (status == B_OK) {
        *out = std::get<T>(*value);
    }
    return status;
}

} // namespace

bool Message::Field::operator==(const Field& other) const {
    return name == other.name && type == other.type &&
           std::equal(values.begin(), values.end(), other.values.begin(), other.values.end(),
                      ValuesEqual);
}

bool Message::operator==(const Message& other) const {
    return what == other.what && fields_ == other.fields_;
}

const Message::Field* Message::FindField(std::string_view name) const {
    auto it = std::find_if(fields_.begin(), fields_.end(),
                           [name](const Field& field) { return field.name == name; });
    return it == fields_.end() ? nullptr : &*it;
}

Message::Field* Message::FindField(std::string_view name) {
    return const_cast<Field*>(std::as_const(*this).FindField(name));
}

status_t Message::GetInfo(std::string_view name, FieldType* type, int32_t* count) const {
    const Field* field = FindField(name);
    if (field == nullptr) {
        return B_NAME_NOT_FOUND;
    }
    *type = field->type;
    *count = int32_t(field->values.size());
    return B_OK;
}

status_t Message::RemoveName(std::string_view name) {
    auto it = std::find_if(fields_.begin(), fields_.end(),
                           [name](const Field& field) { return field.name == name; });
    if (it == fields_.end()) {
        return B_NAME_NOT_FOUND;
    }
    fields_.erase(it);
    return B_OK;
}

status_t Message::AddValue(std::string_view name, FieldType type, Value value) {
    if (value.index() != size_t(type)) {
        return B_BAD_VALUE;
    }
    Field* field = FindField(name);
    if (field == nullptr) {
        fields_.push_back(Field{std::string(name), type, {}});
        field = &fields_.back();
    } else if (field->type != type) {
        return B_BAD_TYPE;
    }
    field->values.push_back(std::move(value));
    return B_OK;
}

status_t Message::FindValue(std::string_view name, FieldType type, int32_t index,
                            const Value** out) const {
    const Field* field = FindField(name);
    if (field == nullptr) {
        return B_NAME_NOT_FOUND;
    }
    if (field->type != type) {
        return B_BAD_TYPE;
    }
    if (index < 0 || size_t(index) >= field->values.size()) {
        return B_BAD_INDEX;
    }
    *out = &field->values[size_t(index)];
    return B_OK;
}

status_t Message::ReplaceValue(std::string_view name, FieldType type, int32_t index, Value value) {
    if (value.index() != size_t(type)) {
        return B_BAD_VALUE;
    }
    const Value* found = nullptr;
    status_t status = FindValue(name, type, index, &found);
    if (status == B_OK) {
        FindField(name)->values[size_t(index)] = std::move(value);
    }
    return status;
}

bool Message::HasValue(std::string_view name, FieldType type, int32_t index) const {
    const Value* found = nullptr;
    return FindValue(name, type, index, &found) == B_OK;
}

status_t Message::FindBool(std::string_view n, bool* out, int32_t i) const {
    return FindTyped(*this, n, FieldType::Bool, i, out);
}
status_t Message::FindInt8(std::string_view n, int8_t* out, int32_t i) const {
    return FindTyped(*this, n, FieldType::Int8, i, out);
}
status_t Message::FindInt16(std::string_view n, int16_t* out, int32_t i) const {
    return FindTyped(*this, n, FieldType::Int16, i, out);
}
status_t Message::FindInt32(std::string_view n, int32_t* out, int32_t i) const {
    return FindTyped(*this, n, FieldType::Int32, i, out);
}
status_t Message::FindInt64(std::string_view n, int64_t* out, int32_t i) const {
    return FindTyped(*this, n, FieldType::Int64, i, out);
}
status_t Message::FindFloat(std::string_view n, float* out, int32_t i) const {
    return FindTyped(*this, n, FieldType::Float, i, out);
}
status_t Message::FindDouble(std::string_view n, double* out, int32_t i) const {
    return FindTyped(*this, n, FieldType::Double, i, out);
}
status_t Message::FindString(std::string_view n, std::string* out, int32_t i) const {
    return FindTyped(*this, n, FieldType::String, i, out);
}
status_t Message::FindPoint(std::string_view n, Point* out, int32_t i) const {
    return FindTyped(*this, n, FieldType::Point, i, out);
}
status_t Message::FindRect(std::string_view n, Rect* out, int32_t i) const {
    return FindTyped(*this, n, FieldType::Rect, i, out);
}
status_t Message::FindData(std::string_view n, FlatData* out, int32_t i) const {
    return FindTyped(*this, n, FieldType::Data, i, out);
}

status_t Message::FindMessage(std::string_view n, Message* out, int32_t i) const {
    std::shared_ptr<const Message> nested;
    status_t status = FindTyped(*this, n, FieldType::Message, i, &nested);
    if (status == B_OK) {
        *out = *nested;
    }
    return status;
}

status_t Message::FindFlat(std::string_view n, Flattenable* out, int32_t i) const {
    const Value* value = nullptr;
    status_t status = FindValue(n, FieldType::Data, i, &value);
    if (status != B_OK) {
        return status;
    }
    const FlatData& data = std::get<FlatData>(*value);
    return out->Unflatten(data.type, data.bytes);
}

bool Message::HasFlat(std::string_view n, const Flattenable& object, int32_t i) const {
    const Value* value = nullptr;
    return FindValue(n, FieldType::Data, i, &value) == B_OK &&
           std::get<FlatData>(*value).type == object.TypeCode();
}

} // namespace vocato
