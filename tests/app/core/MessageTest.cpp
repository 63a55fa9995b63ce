#include "Message.h"
#include "MessageText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace vocato;

TEST(Message, ANameHoldsOneTypeWithIndexedValuesUntilItIsRemoved) {
    Message message;
    for (int32_t channel : {255, -1, -1}) {
        ASSERT_EQ(message.AddInt32("_color", channel), B_OK);
    }
    int8_t small = 0;
    int32_t value = 0;
    EXPECT_EQ(message.AddInt8("_color", 1), B_BAD_TYPE);
    EXPECT_EQ(message.FindInt8("_color", &small), B_BAD_TYPE);
    EXPECT_EQ(message.FindInt32("_color", &value, 3), B_BAD_INDEX);
    ASSERT_EQ(message.ReplaceValue("_color", FieldType::Int32, 1, int32_t(128)), B_OK);
    EXPECT_EQ(message.FindInt32("_color", &value, 1), B_OK);
    EXPECT_EQ(value, 128);
    EXPECT_EQ(message.ReplaceValue("_color", FieldType::Int32, 3, int32_t(1)), B_BAD_INDEX);
    EXPECT_EQ(message.ReplaceValue("_color", FieldType::Int32, 0, int8_t(1)), B_BAD_VALUE);
    ASSERT_EQ(message.RemoveName("_color"), B_OK);
    EXPECT_EQ(message.FindInt32("_color", &value), B_NAME_NOT_FOUND);
    EXPECT_EQ(message.AddString("_color", "red"), B_OK);
}

TEST(MessageText, EveryTypeSurvivesTheRoundTripExactly) {
    Message original(FourCC("pref"));
    original.AddBool("flag", true);
    original.AddInt8("lowest", std::numeric_limits<int8_t>::min());
    original.AddInt16("highest", std::numeric_limits<int16_t>::max());
    original.AddInt32("negative", -2147483647 - 1);
    original.AddInt64("big", std::numeric_limits<int64_t>::max());
    original.AddFloat("third", 1.0f / 3.0f);
    original.AddFloat("negativeZero", -0.0f);
    original.AddFloat("infinite", std::numeric_limits<float>::infinity());
    original.AddDouble("tiny", std::numeric_limits<double>::denorm_min());
    original.AddString("quoted", "say \"hi\"\\ now\nnext line\ttab\x01 é ♪");
    original.AddString("empty", "");
    original.AddString("# not a comment", "end");
    original.AddPoint("where", Point{-1.5f, 2.25f});
    original.AddRect("_frame", Rect{0, 0, 34, 24});
    Message nested(0x00010203);
    nested.AddMessage("_msg", Message(FourCC("MRec")));
    original.AddMessage("_e_on", nested);
    original.AddData("blob", FlatData{FourCC("PNG "), {0x89, 0x50, 0x00, 0xff}});
    original.AddData("nothing", FlatData{0, {}});
    Message parsed;
    ASSERT_EQ(MessageFromText(MessageToText(original), &parsed), B_OK);
    EXPECT_EQ(parsed, original);
    float zero = 1;
    ASSERT_EQ(parsed.FindFloat("negativeZero", &zero), B_OK);
    EXPECT_TRUE(std::signbit(zero));
}

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
