// The executable's window role as a user starts it: without a display, and as the control
// panel of a node.
#include "Fixtures.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Runs the executable with `arguments` in an environment with no display and settings in
// `config`; standard error joins standard output.
vocato::test::CommandOutcome Vocato(const std::string& arguments, const std::string& config) {
    return vocato::test::RunCommand("env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM XDG_CONFIG_HOME=" +
                                    config + " " VOCATO_EXE " " + arguments + " 2>&1");
}

} // namespace

TEST(WindowRole, WithoutADisplayItSaysHowToRunHeadless) {
    vocato::test::TempDir config;
    const auto run = Vocato("", config.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("vocato live"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("vocato convert"), std::string::npos) << run.out;
}

TEST(WindowRole, ANodeThatIsNoSoundCardIsReportedAndTheSettingsAreLeftAlone) {
    vocato::test::TempDir config;
    const bool cardZero = std::system("test -e /dev/snd/controlC0") == 0;
    for (const char* argument : {"node=99", "node=abc", "node="}) {
        if (cardZero && argument[5] != '9') {
            continue;
        }
        const auto run = Vocato(argument, config.Path());
        EXPECT_EQ(run.status, 1) << argument;
        const std::string node = argument[5] == '9' ? "99" : "0";
        EXPECT_NE(run.out.find("error: MediaNodeControlApp: couldn't find node (" + node + "):\n"),
                  std::string::npos)
            << run.out;
    }
    for (const char* other : {"xnode=12", "Node=12"}) {
        EXPECT_EQ(Vocato(other, config.Path()).out.find("couldn't find node"), std::string::npos)
            << other << " is not the control panel";
    }
    EXPECT_NE(std::system(("test -e " + config.Path() + "/Vocato").c_str()), 0)
        << "no settings file was written";
}

// On a real X server (Xvfb): the window opens with the sound file of the command line, and
// a SIGTERM closes it like its close box, leaving the settings written.
TEST(WindowRole, OnARealDisplayTheWindowOpensAndATerminationSavesTheSettings) {
    if (std::system("command -v xvfb-run > /dev/null") != 0) {
        GTEST_SKIP() << "xvfb-run is not installed (package xvfb)";
    }
    vocato::test::TempDir dir;
    const std::string file = vocato::test::WriteTone(dir, "tone.wav", 0.5);
    const std::string script = "env -u QT_QPA_PLATFORM -u WAYLAND_DISPLAY XDG_CONFIG_HOME=" +
                               dir.Path() + " " VOCATO_EXE " " + file +
                               " & pid=$!; sleep 3; kill -TERM $pid; wait $pid; echo status=$?";
    const std::string out = vocato::test::RunCommand("xvfb-run -a sh -c '" + script + "' 2>&1").out;
    EXPECT_NE(out.find("status=0"), std::string::npos) << out;
    EXPECT_NE(out.find("Node file ok"), std::string::npos) << "the file was opened: " << out;
    EXPECT_NE(out.find("Pset"), std::string::npos) << "the window restored its preset: " << out;
    const std::string text = vocato::test::ReadFile(dir.Path() + "/Vocato/Vocato");
    ASSERT_FALSE(text.empty()) << out;
    EXPECT_NE(text.find("float \"Transpose\""), std::string::npos) << text;
    EXPECT_NE(text.find("float \"midiMax\" 72"), std::string::npos) << text;
}
