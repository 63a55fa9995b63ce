// The live input's connections panel on a private JACK server, whose dummy backend offers
// system:capture_1 and _2; a second client brings an output of its own.
#include "JackInputWeb.h"

#include "JackServer.h"
#include "JackTestClients.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>

namespace vocato::test {
namespace {

struct Silence final : media::JackPeriodHandler {
    void Period(const media::JackPeriod&) noexcept override {}
};

class JackInputWebTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(server.Ready()) << "jackd (package jackd2) did not start";
        ASSERT_TRUE(singer.Ok());
        std::string error;
        media::JackClient::Options options;
        options.serverName = server.Name();
        client = media::JackClient::Open(options, silence, error);
        ASSERT_NE(client, nullptr) << error;
        ASSERT_TRUE(client->Activate(error)) << error;
        web = std::make_unique<media::JackInputWeb>(*client);
    }

    int32_t IdOf(const std::string& port) const {
        const auto& ports = web->Groups().at(0).parameters;
        const auto it = std::find_if(ports.begin(), ports.end(),
                                     [&](const media::Parameter& p) { return p.name == port; });
        return it == ports.end() ? -1 : it->id;
    }
    float Value(const std::string& port) const {
        float value = -1.0f;
        EXPECT_TRUE(web->GetValue(IdOf(port), &value)) << port;
        return value;
    }
    bool Jack(const std::string& command, const std::string& from) const {
        return std::system(
                   (command + " -s " + server.Name() + " " + from + " Vocato:input >/dev/null 2>&1")
                       .c_str()) == 0;
    }

    JackServer server;
    PlayerClient singer{"singer", {}}; // another program with an audio output, silent
    Silence silence;
    std::unique_ptr<media::JackClient> client;
    std::unique_ptr<media::JackInputWeb> web;
};

TEST_F(JackInputWebTest, OffersEveryOtherAudioOutputAsASwitchThatShowsAndMakesItsConnection) {
    ASSERT_EQ(web->Groups().size(), 1u);
    EXPECT_EQ(web->Groups()[0].name, "Vocato:input");
    std::vector<std::string> names;
    for (const media::Parameter& p : web->Groups()[0].parameters) {
        EXPECT_EQ(p.kind, media::ParameterKind::Switch) << p.name;
        EXPECT_EQ(web->Find(p.id), &p) << "ids are unique";
        names.push_back(p.name);
    }
    EXPECT_EQ(names,
              (std::vector<std::string>{"system:capture_1", "system:capture_2", "singer:out"}));

    ASSERT_TRUE(Jack("jack_connect", "singer:out"));
    EXPECT_EQ(Value("singer:out"), 1.0f);
    EXPECT_EQ(Value("system:capture_1"), 0.0f);
    ASSERT_TRUE(Jack("jack_disconnect", "singer:out"));
    EXPECT_EQ(Value("singer:out"), 0.0f);

    const int32_t capture = IdOf("system:capture_2");
    EXPECT_TRUE(web->SetValue(capture, 1.0f));
    EXPECT_TRUE(PortsConnected(server.Name(), "Vocato:input", "system:capture_2"));
    EXPECT_EQ(Value("system:capture_2"), 1.0f);
    EXPECT_TRUE(web->SetValue(capture, 1.0f)) << "already connected";
    EXPECT_TRUE(web->SetValue(IdOf("singer:out"), 1.0f));
    EXPECT_TRUE(PortsConnected(server.Name(), "Vocato:input", "singer:out"));

    EXPECT_TRUE(web->SetValue(capture, 0.0f));
    EXPECT_FALSE(PortsConnected(server.Name(), "Vocato:input", "system:capture_2"));
    EXPECT_TRUE(PortsConnected(server.Name(), "Vocato:input", "singer:out"));
    EXPECT_TRUE(web->SetValue(capture, 0.0f)) << "already disconnected";

    float value = 0.0f;
    EXPECT_FALSE(web->GetValue(99, &value));
    EXPECT_FALSE(web->SetValue(99, 1.0f));
    EXPECT_FALSE(client->ConnectInput("Vocato:synth_left")) << "not a source of its own input";
    EXPECT_FALSE(client->ConnectInput("system:playback_1")) << "an input";
}

TEST_F(JackInputWebTest, AGoneServerLeavesAPanelThatRefusesQuietly) {
    // A clean end: a killed server would leave its entry in JACK's shared registry behind.
    server.Kill(SIGTERM);
    ASSERT_TRUE(WaitFor([this] { return client->Lost(); }, 5.0));
    float value = 0.0f;
    EXPECT_FALSE(web->GetValue(IdOf("system:capture_1"), &value));
    EXPECT_FALSE(web->SetValue(IdOf("system:capture_1"), 1.0f));
    EXPECT_TRUE(client->InputSources().empty());
}

} // namespace
} // namespace vocato::test
