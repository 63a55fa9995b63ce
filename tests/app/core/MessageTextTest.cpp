// The settings and archive text: its exact form, hand-edited and hostile input,
// and a long random-input run (random bytes, damaged copies of real texts and
// random messages must never crash the loader, and whatever it accepts must
// write itself back the same way). With Clang, fuzz/ holds a libFuzzer target
// for longer runs.
#include "MessageText.h"
#include "Message.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

using namespace vocato;

namespace {

Message RandomMessage(std::mt19937& random, int depth = 0) {
    auto byte = [&] { return uint8_t(random()); };
    auto real = [&] { return std::uniform_real_distribution<float>(-1e6f, 1e6f)(random); };
    auto text = [&] {
        std::string s(random() % 7, ' ');
        std::generate(s.begin(), s.end(), [&] { return char(byte()); });
        return s;
    };
    // In the order of FieldType, which is also the order of Message::Value.
    const std::function<Message::Value()> make[] = {
        [&] { return bool(byte() & 1); },
        [&] { return int8_t(byte()); },
        [&] { return int16_t(random()); },
        [&] { return int32_t(random()); },
        [&] { return int64_t(random()) << 31; },
        [&] { return real(); },
        [&] { return double(real()) / 7; },
        [&] { return text(); },
        [&] {
            return Point{real(), real()};
        },
        [&] {
            return Rect{real(), real(), real(), real()};
        },
        [&] { return std::make_shared<const Message>(RandomMessage(random, depth + 1)); },
        [&] {
            return FlatData{uint32_t(random()), {byte(), 0}};
        },
    };
    Message message{uint32_t(random())};
    for (int field = int(random() % 7); field > 0; --field) {
        std::string name = text() + std::to_string(field);
        auto type = FieldType(random() % 12);
        if (type == FieldType::Message && depth >= 3) {
            type = FieldType::Data;
        }
        for (int values = 1 + int(random() % 3); values > 0; --values) {
            message.AddValue(name, type, make[size_t(type)]());
        }
    }
    return message;
}

// Texts, not messages, are compared so that a NaN the damage made equals itself.
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

TEST(MessageText, TheTextIsReadableByPeopleAndMayBeEditedByHand) {
    Message message(FourCC("pref"));
    message.AddInt8("MidiChannel", 5);
    message.AddString("MidiPortName", "Midi Through:Midi Through Port-0");
    message.AddFloat("BendRange", 6);
    EXPECT_EQ(message.what, 0x70726566u);
    EXPECT_EQ(MessageToText(message),
              "what 'pref'\n"
              "int8 \"MidiChannel\" 5\n"
              "string \"MidiPortName\" \"Midi Through:Midi Through Port-0\"\n"
              "float \"BendRange\" 6\n"
              "end\n");
    Message parsed;
    ASSERT_EQ(MessageFromText("# by hand\r\n\r\nwhat 'pref'\r\n  int8 \"MidiChannel\" 5  \r\n"
                              "string \"MidiPortName\" \"Midi Through:Midi Through Port-0\"\n"
                              "# note\r\nfloat \"BendRange\" 6\nend\r\n\n# after\n",
                              &parsed),
              B_OK);
    EXPECT_EQ(parsed, message);
}

TEST(MessageText, MalformedTextIsRejectedAndLeavesTheTargetAlone) {
    const char* broken[] = {
        "",
        "end\n",
        "what 'pref'\n",                                    // cut before its end
        "what 'pref'\nint8 \"MidiChannel\" 5\n",            // cut at a line boundary
        "what 'pref'\nint8 \"MidiChannel\" 128\nend\n",     // out of range for int8
        "what 'pref'\nint8 \"MidiChannel\" 5x\nend\n",      // trailing characters
        "what 'pref'\nint9 \"MidiChannel\" 5\nend\n",       // unknown type
        "what 'pref'\nstring \"Name\" \"open\nend\n",       // unterminated string
        "what 'pref'\nstring \"Name\" \"bad \\q\"\nend\n",  // unknown escape
        "what 'pref'\nint8 \"a\" 1\nint32 \"a\" 2\nend\n",  // one name, two types
        "what 'pref'\nrect \"r\" 1 2 3\nend\n",             // too few numbers
        "what 'pref'\nmessage \"m\" {\nwhat 'x'\nend\n",    // bad nested code, no brace
        "what 'pref'\nmessage \"m\" {\nwhat 'MRec'\nend\n", // nested message never closed
        "what 'pref'\ndata \"d\" 'PNG ' \"abc\"\nend\n",    // odd hex digits
        "what 'pref'\nend\nint8 \"late\" 1\n",              // content after the end
        "what 'pre'\nend\n",                                // three-character code
    };
    for (const char* text : broken) {
        Message target(FourCC("keep"));
        target.AddInt8("marker", 1);
        Message before = target;
        EXPECT_EQ(MessageFromText(text, &target), B_BAD_DATA) << text;
        EXPECT_EQ(target, before) << text;
    }
}

TEST(MessageText, DeepNestingIsRefusedInsteadOfExhaustingTheStack) {
    std::string text = "what 'pref'\n";
    for (int i = 0; i < 100000; ++i) {
        text += "message \"m\" {\nwhat 'pref'\n";
    }
    Message parsed;
    EXPECT_EQ(MessageFromText(text, &parsed), B_BAD_DATA);
}

TEST(MessageTextFuzz, RandomMessagesRoundTripAndEveryCutShortCopyIsRejected) {
    std::mt19937 random(20261123);
    for (int i = 0; i < 3000; ++i) {
        Message original = RandomMessage(random);
        std::string text = MessageToText(original);
        Message parsed;
        ASSERT_EQ(MessageFromText(text, &parsed), B_OK) << text;
        ASSERT_EQ(parsed, original) << text;
        // Dropping only the final line end still leaves a complete text.
        for (size_t length = 0; i < 40 && length + 1 < text.size(); ++length) {
            ASSERT_EQ(MessageFromText(std::string_view(text).substr(0, length), &parsed),
                      B_BAD_DATA)
                << "accepted the first " << length << " bytes of\n"
                << text;
        }
    }
}

TEST(MessageTextFuzz, RandomBytesAndDamagedFilesNeverCrashTheLoader) {
    std::mt19937 random(42);
    const std::string alphabet = "what'pref\"int8 string{}message\\x0a\n end#-.e9 ";
    for (int i = 0; i < 100000; ++i) {
        std::string text(random() % 256 * 2, ' ');
        for (char& c : text) {
            c = i % 2 == 0 ? alphabet[random() % alphabet.size()] : char(random());
        }
        ExpectStableIfAccepted(text);
    }
    for (int i = 0; i < 20000; ++i) {
        std::string text = MessageToText(RandomMessage(random));
        for (int flips = 1 + int(random() % 4); flips > 0; --flips) {
            text[random() % text.size()] = char(random());
        }
        ExpectStableIfAccepted(text);
    }
}
