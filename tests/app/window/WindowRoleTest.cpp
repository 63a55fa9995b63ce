// The executable's window role as a user starts it: without a display, and as the control
// panel of a node.
#include "Fixtures.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace {

struct Outcome {
    int status;
    std::string out;
};

// Runs the executable with `arguments` in an environment with no display and settings in
// `config`; standard error joins standard output.
Outcome Vocato(const std::string& arguments, const std::string& config) {
    const std::string command = "env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM XDG_CONFIG_HOME=" +
                                config + " " VOCATO_EXE " " + arguments + " 2>&1";
    Outcome run{-1, {}};
    FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 256> chunk;
    while (size_t n = std::fread(chunk.data(), 1, chunk.size(), pipe)) {
        run.out.append(chunk.data(), n);
    }
    run.status = WEXITSTATUS(pclose(pipe));
    return run;
}

} // namespace

TEST(WindowRole, WithoutADisplayItSaysHowToRunHeadless) {
    vocato::test::TempDir config;
    const Outcome run = Vocato("", config.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("vocato live"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("vocato convert"), std::string::npos) << run.out;
}

TEST(WindowRole, NodeArgumentsAskForTheControlPanelAndLeaveTheSettingsAlone) {
    vocato::test::TempDir config;
    for (const char* argument : {"node=12", "node=", "node=abc"}) {
        const Outcome run = Vocato(argument, config.Path());
        EXPECT_EQ(run.status, 0) << argument;
        EXPECT_NE(run.out.find("control panel"), std::string::npos) << run.out;
        EXPECT_NE(run.out.find(std::string("node ") + (argument[5] == '1' ? "12" : "0")),
                  std::string::npos)
            << run.out;
    }
    EXPECT_NE(std::system(("test -e " + config.Path() + "/Vocato").c_str()), 0)
        << "no settings file was written";
}

TEST(WindowRole, ArgumentsThatAreNotTheControlPanelGoElsewhere) {
    vocato::test::TempDir config;
    const Outcome other = Vocato("xnode=12", config.Path());
    EXPECT_EQ(other.out.find("control panel"), std::string::npos) << other.out;
    const Outcome upper = Vocato("Node=12", config.Path());
    EXPECT_EQ(upper.out.find("control panel"), std::string::npos) << upper.out;
}
