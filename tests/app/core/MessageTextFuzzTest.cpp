// A long random-input run over the settings loader: random bytes, damaged
// copies of real texts and random messages must never crash it, and whatever
// it accepts must be a message that writes itself back the same way. (With
// Clang, fuzz/ holds a libFuzzer target for longer runs.)
#include "Message.h"
#include "MessageText.h"

#include <gtest/gtest.h>

#include <random>

using namespace vocato;

namespace {

Message RandomMessage(std::mt19937& random, int depth) {
    std::uniform_int_distribution<int> type(0, depth < 3 ? 11 : 10);
    std::uniform_int_distribution<int> byte(0, 255);
    std::uniform_int_distribution<int> count(0, 6);
    auto text = [&] {
        std::string s;
        for (int i = count(random); i > 0; --i) {
            s += char(byte(random));
        }
        return s;
    };
    auto real = [&] { return std::uniform_real_distribution<float>(-1e6f, 1e6f)(random); };
    Message message{uint32_t(random())};
    for (int field = count(random); field > 0; --field) {
        std::string name = text() + std::to_string(field);
        for (int values = 1 + count(random) / 3; values > 0; --values) {
            switch (FieldType(depth < 3 ? type(random) : type(random) % 10)) {
            case FieldType::Bool:
                message.AddBool(name, byte(random) & 1);
                break;
            case FieldType::Int8:
                message.AddInt8(name, int8_t(byte(random)));
                break;
            case FieldType::Int16:
                message.AddInt16(name, int16_t(random()));
                break;
            case FieldType::Int32:
                message.AddInt32(name, int32_t(random()));
                break;
            case FieldType::Int64:
                message.AddInt64(name, int64_t(random()) << 31);
                break;
            case FieldType::Float:
                message.AddFloat(name, real());
                break;
            case FieldType::Double:
                message.AddDouble(name, double(real()) / 7);
                break;
            case FieldType::String:
                message.AddString(name, text());
                break;
            case FieldType::Point:
                message.AddPoint(name, {real(), real()});
                break;
            case FieldType::Rect:
                message.AddRect(name, {real(), real(), real(), real()});
                break;
            case FieldType::Message:
                message.AddMessage(name, RandomMessage(random, depth + 1));
                break;
            case FieldType::Data:
                message.AddData(name, {uint32_t(random()), {uint8_t(byte(random)), 0}});
                break;
            }
        }
    }
    return message;
}

// Whatever the parser accepts must be stable: written again and read again, it
// writes the same text (texts, not messages, are compared so that a NaN that
// the damage produced compares equal to itself).
void ExpectStableIfAccepted(std::string_view text) {
    Message parsed;
    if (MessageFromText(text, &parsed) != B_OK) {
        return;
    }
    std::string written = MessageToText(parsed);
    Message again;
    ASSERT_EQ(MessageFromText(written, &again), B_OK) << written;
    ASSERT_EQ(MessageToText(again), written);
}

} // namespace

TEST(MessageTextFuzz, RandomMessagesRoundTrip) {
    std::mt19937 random(20261123);
    for (int i = 0; i < 3000; ++i) {
        Message original = RandomMessage(random, 0);
        Message parsed;
        ASSERT_EQ(MessageFromText(MessageToText(original), &parsed), B_OK) << "message " << i;
        ASSERT_EQ(parsed, original) << "message " << i;
    }
}

TEST(MessageTextFuzz, EveryCutShortCopyOfAFileIsRejected) {
    std::mt19937 random(7);
    for (int i = 0; i < 40; ++i) {
        std::string text = MessageToText(RandomMessage(random, 0));
        // Dropping only the final line end still leaves a complete text.
        for (size_t length = 0; length + 1 < text.size(); ++length) {
            Message parsed;
            ASSERT_EQ(MessageFromText(std::string_view(text).substr(0, length), &parsed),
                      B_BAD_DATA)
                << "accepted the first " << length << " bytes of\n"
                << text;
        }
    }
}

TEST(MessageTextFuzz, RandomBytesAndDamagedFilesNeverCrashTheLoader) {
    std::mt19937 random(42);
    std::uniform_int_distribution<int> byte(0, 255);
    const std::string alphabet = "what'pref\"int8 string{}message\\x0a\n end#-.e9 ";
    for (int i = 0; i < 100000; ++i) {
        std::string text;
        size_t length = size_t(byte(random)) * 2;
        bool fromAlphabet = i % 2 == 0;
        for (size_t j = 0; j < length; ++j) {
            text += fromAlphabet ? alphabet[size_t(byte(random)) % alphabet.size()]
                                 : char(byte(random));
        }
        ExpectStableIfAccepted(text);
    }
    for (int i = 0; i < 20000; ++i) {
        std::string text = MessageToText(RandomMessage(random, 0));
        for (int flips = 1 + byte(random) % 4; flips > 0; --flips) {
            text[size_t(random()) % text.size()] = char(byte(random));
        }
        ExpectStableIfAccepted(text);
    }
}
