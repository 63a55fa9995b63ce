#include "Message.h"
#include "MessageText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace vocato;

TEST(Message, FourCharacterCodesReadAsWritten) {
    EXPECT_EQ(FourCC("pref"), 0x70726566u);
    EXPECT_EQ(FourCC("ARCV"), 0x41524356u);
}

TEST(Message, FieldsKeepTheOrderTheyWereAddedIn) {
    Message message(FourCC("Pset"));
    message.AddInt8("Preset", 20);
    message.AddString("Name", "Alto recorder");
    message.AddFloat("Level", 0.5f);
    ASSERT_EQ(message.CountNames(), 3);
    EXPECT_EQ(message.Fields()[0].name, "Preset");
    EXPECT_EQ(message.Fields()[1].name, "Name");
    EXPECT_EQ(message.Fields()[2].name, "Level");
}

TEST(Message, ANameHoldsOneTypeOnly) {
    Message message;
    ASSERT_EQ(message.AddInt32("Preset", 7), B_OK);
    EXPECT_EQ(message.AddInt8("Preset", 1), B_BAD_TYPE);
    int8_t small = 0;
    EXPECT_EQ(message.FindInt8("Preset", &small), B_BAD_TYPE);
    int32_t value = 0;
    EXPECT_EQ(message.FindInt32("Preset", &value), B_OK);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(message.FindInt32("Missing", &value), B_NAME_NOT_FOUND);
}

TEST(Message, RepeatedAddsMakeIndexedValues) {
    Message message;
    for (int32_t channel : {255, -1, -1}) {
        message.AddInt32("_color", channel);
    }
    int32_t value = 0;
    EXPECT_EQ(message.FindInt32("_color", &value, 0), B_OK);
    EXPECT_EQ(value, 255);
    EXPECT_EQ(message.FindInt32("_color", &value, 2), B_OK);
    EXPECT_EQ(value, -1);
    EXPECT_EQ(message.FindInt32("_color", &value, 3), B_BAD_INDEX);
    EXPECT_TRUE(message.HasValue("_color", FieldType::Int32, 2));
    EXPECT_FALSE(message.HasValue("_color", FieldType::Int32, 3));
    ASSERT_EQ(message.ReplaceValue("_color", FieldType::Int32, 1, int32_t(128)), B_OK);
    EXPECT_EQ(message.FindInt32("_color", &value, 1), B_OK);
    EXPECT_EQ(value, 128);
    EXPECT_EQ(message.ReplaceValue("_color", FieldType::Int32, 5, int32_t(1)), B_BAD_INDEX);
    EXPECT_EQ(message.ReplaceValue("_color", FieldType::Int32, 0, int8_t(1)), B_BAD_VALUE)
        << "a value of another type than the one named";
}

TEST(Message, NestedMessagesAreCopiesNotShares) {
    Message inner(FourCC("MRec"));
    inner.AddBool("on", true);
    Message outer;
    outer.AddMessage("_msg", inner);
    Message copy = outer;
    ASSERT_EQ(copy.ReplaceValue("_msg", FieldType::Message, 0,
                                std::make_shared<const Message>(FourCC("MStp"))),
              B_OK);

    Message found;
    ASSERT_EQ(outer.FindMessage("_msg", &found), B_OK);
    EXPECT_EQ(found.what, FourCC("MRec"));
    EXPECT_EQ(found, inner);
    ASSERT_EQ(copy.FindMessage("_msg", &found), B_OK);
    EXPECT_EQ(found.what, FourCC("MStp"));
    EXPECT_NE(copy, outer);
}

TEST(Message, RemovingANameFreesItForAnotherType) {
    Message message;
    message.AddFloat("midiMin", 48);
    ASSERT_EQ(message.RemoveName("midiMin"), B_OK);
    EXPECT_EQ(message.AddString("midiMin", "C3"), B_OK);
    EXPECT_EQ(message.RemoveName("midiMin"), B_OK);
    EXPECT_EQ(message.RemoveName("midiMin"), B_NAME_NOT_FOUND);
    EXPECT_TRUE(message.IsEmpty());
}

namespace {

Message EveryKindOfField() {
    Message message(FourCC("pref"));
    message.AddBool("flag", true);
    message.AddInt8("lowest", std::numeric_limits<int8_t>::min());
    message.AddInt16("highest", std::numeric_limits<int16_t>::max());
    message.AddInt32("negative", -2147483647 - 1);
    message.AddInt64("big", std::numeric_limits<int64_t>::max());
    message.AddFloat("third", 1.0f / 3.0f);
    message.AddFloat("negativeZero", -0.0f);
    message.AddFloat("infinite", std::numeric_limits<float>::infinity());
    message.AddDouble("tiny", std::numeric_limits<double>::denorm_min());
    message.AddString("quoted", "say \"hi\"\\ now\nnext line\ttab\x01 é ♪");
    message.AddString("empty", "");
    message.AddString("# not a comment", "end");
    message.AddPoint("where", Point{-1.5f, 2.25f});
    message.AddRect("_frame", Rect{0, 0, 34, 24});
    Message nested(0x00010203);
    nested.AddString("class", "BPicture");
    Message deeper(FourCC("MRec"));
    nested.AddMessage("_msg", deeper);
    message.AddMessage("_e_on", nested);
    message.AddData("blob", FlatData{FourCC("PNG "), {0x89, 0x50, 0x00, 0xff}});
    message.AddData("nothing", FlatData{0, {}});
    return message;
}

} // namespace

TEST(MessageText, EveryTypeSurvivesTheRoundTripExactly) {
    Message original = EveryKindOfField();
    Message parsed;
    ASSERT_EQ(MessageFromText(MessageToText(original), &parsed), B_OK);
    EXPECT_EQ(parsed, original);
    float zero = 1;
    ASSERT_EQ(parsed.FindFloat("negativeZero", &zero), B_OK);
    EXPECT_TRUE(std::signbit(zero));
}

TEST(MessageText, TheTextIsReadableByPeople) {
    Message message(FourCC("pref"));
    message.AddInt8("MidiChannel", 5);
    message.AddString("MidiPortName", "Midi Through:Midi Through Port-0");
    message.AddFloat("BendRange", 6);
    EXPECT_EQ(MessageToText(message),
              "what 'pref'\n"
              "int8 \"MidiChannel\" 5\n"
              "string \"MidiPortName\" \"Midi Through:Midi Through Port-0\"\n"
              "float \"BendRange\" 6\n"
              "end\n");
}

TEST(MessageText, CommentsBlankLinesAndWindowsLineEndsAreAccepted) {
    Message parsed;
    ASSERT_EQ(MessageFromText("# written by hand\r\n\r\nwhat 'pref'\r\n  int8 \"MidiChannel\" 3  "
                              "\r\n# trailing note\r\nend\r\n\n# after\n",
                              &parsed),
              B_OK);
    int8_t channel = 0;
    EXPECT_EQ(parsed.FindInt8("MidiChannel", &channel), B_OK);
    EXPECT_EQ(channel, 3);
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
