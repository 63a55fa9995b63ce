#include "MessageText.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace vocato {

namespace {

constexpr std::array<std::string_view, 12> kTypeNames = {
    "bool",   "int8",   "int16", "int32", "int64",   "float",
    "double", "string", "point", "rect",  "message", "data",
};

// Archives nest a message or two; a hostile file nesting thousands must not
// exhaust the stack.
constexpr int kMaxDepth = 16;

bool IsPlainCodeChar(char c) {
    return c >= 0x20 && c <= 0x7e && c != '\'';
}

void AppendCode(std::string& out, uint32_t code) {
    char chars[4] = {char(code >> 24), char(code >> 16), char(code >> 8), char(code)};
    bool plain = true;
    for (char c : chars) {
        plain = plain && IsPlainCodeChar(c);
    }
    if (plain) {
        out += '\'';
        out.append(chars, 4);
        out += '\'';
    } else {
        char hex[11];
        std::snprintf(hex, sizeof hex, "0x%08x", code);
        out += hex;
    }
}

void AppendQuoted(std::string& out, std::string_view text) {
    out += '"';
    for (char c : text) {
        auto byte = uint8_t(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else if (byte < 0x20 || byte == 0x7f) {
            char escape[5];
            std::snprintf(escape, sizeof escape, "\\x%02x", byte);
            out += escape;
        } else {
            out += c;
        }
    }
    out += '"';
}

template <class T> void AppendNumber(std::string& out, T value) {
    char buffer[64];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    out.append(buffer, result.ptr);
}

void AppendHex(std::string& out, const std::vector<uint8_t>& bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    out += '"';
    for (uint8_t byte : bytes) {
        out += kDigits[byte >> 4];
        out += kDigits[byte & 15];
    }
    out += '"';
}

void AppendMessage(std::string& out, const Message& message);

void AppendValue(std::string& out, const Message::Value& value) {
    std::visit(
        [&out](const auto& v) {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, bool>) {
                out += v ? "true" : "false";
            } else if constexpr (std::is_same_v<T, std::string>) {
                AppendQuoted(out, v);
            } else if constexpr (std::is_same_v<T, Point>) {
                AppendNumber(out, v.x);
                out += ' ';
                AppendNumber(out, v.y);
            } else if constexpr (std::is_same_v<T, Rect>) {
                const float edges[] = {v.left, v.top, v.right, v.bottom};
                for (size_t i = 0; i < 4; ++i) {
                    out += i == 0 ? "" : " ";
                    AppendNumber(out, edges[i]);
                }
            } else if constexpr (std::is_same_v<T, std::shared_ptr<const Message>>) {
                out += "{\n";
                AppendMessage(out, *v);
                out += '}';
            } else if constexpr (std::is_same_v<T, FlatData>) {
                AppendCode(out, v.type);
                out += ' ';
                AppendHex(out, v.bytes);
            } else {
                AppendNumber(out, v);
            }
        },
        value);
}

void AppendMessage(std::string& out, const Message& message) {
    out += "what ";
    AppendCode(out, message.what);
    out += '\n';
    for (const Message::Field& field : message.Fields()) {
        for (const Message::Value& value : field.values) {
            out += kTypeNames[size_t(field.type)];
            out += ' ';
            AppendQuoted(out, field.name);
            out += ' ';
            AppendValue(out, value);
            out += '\n';
        }
    }
}

// Reads the tokens of one line.
class LineReader {
public:
    explicit LineReader(std::string_view line) : line_(line) {}

    bool AtEnd() {
        SkipBlanks();
        return pos_ == line_.size();
    }

    bool Word(std::string_view* word) {
        SkipBlanks();
        size_t start = pos_;
        while (pos_ < line_.size() && line_[pos_] != ' ' && line_[pos_] != '\t') {
            ++pos_;
        }
        *word = line_.substr(start, pos_ - start);
        return !word->empty();
    }

    bool Quoted(std::string* text) {
        SkipBlanks();
        if (pos_ == line_.size() || line_[pos_] != '"') {
            return false;
        }
        text->clear();
        for (++pos_; pos_ < line_.size(); ++pos_) {
            char c = line_[pos_];
            if (c == '"') {
                ++pos_;
                return true;
            }
            if (c == '\\' && !Escape(text)) {
                return false;
            }
            if (c != '\\') {
                *text += c;
            }
        }
        return false;
    }

    template <class T> bool Number(T* value) {
        std::string_view word;
        if (!Word(&word)) {
            return false;
        }
        auto result = std::from_chars(word.data(), word.data() + word.size(), *value);
        return result.ec == std::errc() && result.ptr == word.data() + word.size();
    }

    bool Code(uint32_t* code) {
        SkipBlanks();
        // A quoted code may contain blanks ('PNG '), so it is read by length.
        if (pos_ < line_.size() && line_[pos_] == '\'') {
            if (line_.size() - pos_ < 6 || line_[pos_ + 5] != '\'') {
                return false;
            }
            *code = 0;
            for (char c : line_.substr(pos_ + 1, 4)) {
                if (!IsPlainCodeChar(c)) {
                    return false;
                }
                *code = (*code << 8) | uint8_t(c);
            }
            pos_ += 6;
            return pos_ == line_.size() || line_[pos_] == ' ' || line_[pos_] == '\t';
        }
        std::string_view word;
        if (!Word(&word) || word.size() != 10 || word.substr(0, 2) != "0x") {
            return false;
        }
        auto result = std::from_chars(word.data() + 2, word.data() + 10, *code, 16);
        return result.ec == std::errc() && result.ptr == word.data() + 10;
    }

private:
    void SkipBlanks() {
        while (pos_ < line_.size() && (line_[pos_] == ' ' || line_[pos_] == '\t')) {
            ++pos_;
        }
    }

    // Called with pos_ on the backslash; leaves it on the escape's last character.
    bool Escape(std::string* text) {
        if (++pos_ == line_.size()) {
            return false;
        }
        switch (line_[pos_]) {
        case '"':
        case '\\':
            *text += line_[pos_];
            return true;
        case 'n':
            *text += '\n';
            return true;
        case 'x': {
            if (line_.size() - pos_ < 3) {
                return false;
            }
            uint8_t byte = 0;
            const char* digits = line_.data() + pos_ + 1;
            auto result = std::from_chars(digits, digits + 2, byte, 16);
            if (result.ec != std::errc() || result.ptr != digits + 2) {
                return false;
            }
            *text += char(byte);
            pos_ += 2;
            return true;
        }
        default:
            return false;
        }
    }

    std::string_view line_;
    size_t pos_ = 0;
};

bool DecodeHex(const std::string& hex, std::vector<uint8_t>* bytes) {
    if (hex.size() % 2 != 0) {
        return false;
    }
    bytes->resize(hex.size() / 2);
    for (size_t i = 0; i < bytes->size(); ++i) {
        auto result = std::from_chars(hex.data() + 2 * i, hex.data() + 2 * i + 2, (*bytes)[i], 16);
        if (result.ec != std::errc() || result.ptr != hex.data() + 2 * i + 2) {
            return false;
        }
    }
    return true;
}

class TextParser {
public:
    explicit TextParser(std::string_view text) : text_(text) {}

    bool ParseDocument(Message* message) {
        std::string_view line;
        return ParseMessage(message, 0, "end") && !NextLine(&line);
    }

private:
    // Skips blank lines and comments.
    bool NextLine(std::string_view* line) {
        while (pos_ < text_.size()) {
            size_t end = text_.find('\n', pos_);
            if (end == std::string_view::npos) {
                end = text_.size();
            }
            std::string_view raw = text_.substr(pos_, end - pos_);
            pos_ = end + 1;
            if (!raw.empty() && raw.back() == '\r') {
                raw.remove_suffix(1);
            }
            size_t first = raw.find_first_not_of(" \t");
            if (first != std::string_view::npos && raw[first] != '#') {
                *line = raw.substr(first);
                while (line->back() == ' ' || line->back() == '\t') {
                    line->remove_suffix(1);
                }
                return true;
            }
        }
        return false;
    }

    bool ParseMessage(Message* message, int depth, std::string_view closer) {
        std::string_view line;
        std::string_view keyword;
        if (!NextLine(&line)) {
            return false;
        }
        LineReader header(line);
        if (!header.Word(&keyword) || keyword != "what" || !header.Code(&message->what) ||
            !header.AtEnd()) {
            return false;
        }
        while (NextLine(&line)) {
            if (line == closer) {
                return true;
            }
            if (!ParseField(line, message, depth)) {
                return false;
            }
        }
        return false;
    }

    bool ParseField(std::string_view line, Message* message, int depth) {
        LineReader reader(line);
        std::string_view typeName;
        std::string name;
        if (!reader.Word(&typeName) || !reader.Quoted(&name)) {
            return false;
        }
        size_t type = 0;
        while (type < kTypeNames.size() && kTypeNames[type] != typeName) {
            ++type;
        }
        Message::Value value;
        if (type == kTypeNames.size() || !ParseValue(reader, FieldType(type), depth, &value) ||
            !reader.AtEnd()) {
            return false;
        }
        return message->AddValue(name, FieldType(type), std::move(value)) == B_OK;
    }

    template <class T> static bool Read(LineReader& reader, Message::Value* value) {
        T number{};
        if (!reader.Number(&number)) {
            return false;
        }
        *value = number;
        return true;
    }

    bool ParseValue(LineReader& reader, FieldType type, int depth, Message::Value* value) {
        switch (type) {
        case FieldType::Bool: {
            std::string_view word;
            reader.Word(&word);
            *value = word == "true";
            return word == "true" || word == "false";
        }
        case FieldType::Int8:
            return Read<int8_t>(reader, value);
        case FieldType::Int16:
            return Read<int16_t>(reader, value);
        case FieldType::Int32:
            return Read<int32_t>(reader, value);
        case FieldType::Int64:
            return Read<int64_t>(reader, value);
        case FieldType::Float:
            return Read<float>(reader, value);
        case FieldType::Double:
            return Read<double>(reader, value);
        case FieldType::String: {
            std::string text;
            bool ok = reader.Quoted(&text);
            *value = std::move(text);
            return ok;
        }
        case FieldType::Point: {
            Point p;
            bool ok = reader.Number(&p.x) && reader.Number(&p.y);
            *value = p;
            return ok;
        }
        case FieldType::Rect: {
            Rect r;
            bool ok = reader.Number(&r.left) && reader.Number(&r.top) && reader.Number(&r.right) &&
                      reader.Number(&r.bottom);
            *value = r;
            return ok;
        }
        case FieldType::Message: {
            std::string_view brace;
            if (depth >= kMaxDepth || !reader.Word(&brace) || brace != "{" || !reader.AtEnd()) {
                return false;
            }
            auto nested = std::make_shared<Message>();
            bool ok = ParseMessage(nested.get(), depth + 1, "}");
            *value = std::shared_ptr<const Message>(std::move(nested));
            return ok;
        }
        case FieldType::Data: {
            FlatData data;
            std::string hex;
            bool ok = reader.Code(&data.type) && reader.Quoted(&hex) && DecodeHex(hex, &data.bytes);
            *value = std::move(data);
            return ok;
        }
        }
        return false;
    }

    std::string_view text_;
    size_t pos_ = 0;
};

} // namespace

std::string MessageToText(const Message& message) {
    std::string out;
    AppendMessage(out, message);
    out += "end\n";
    return out;
}

status_t MessageFromText(std::string_view text, Message* out) {
    Message parsed;
    if (!TextParser(text).ParseDocument(&parsed)) {
        return B_BAD_DATA;
    }
    *out = std::move(parsed);
    return B_OK;
}

} // namespace vocato
