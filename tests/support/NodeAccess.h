// A node reached as a producer and a control panel reach it: its one input connected to raw
// 16-bit audio, its parameters read.
#pragma once

#include "NodeParameters.h"
#include "VocatoNode.h"

#include <gtest/gtest.h>

#include <bit>

namespace vocato::test {

inline media::MediaInput ConnectAudio(VocatoNode& node, uint32_t channels, double rate) {
    int32_t cookie = 0;
    media::MediaInput input;
    node.GetNextInput(&cookie, &input);
    media::MediaFormat format;
    format.type = media::MediaType::RawAudio;
    format.raw.channelCount = channels;
    format.raw.frameRate = rate;
    format.raw.bufferSize = 4096;
    node.Connected({1, 1}, input.destination, format, &input);
    return input;
}

// The program and the preset are kept as whole numbers, every other parameter as a float.
inline float ParameterValue(const VocatoNode& node, int32_t id) {
    int64_t when = 0;
    uint32_t raw = 0;
    size_t size = sizeof raw;
    EXPECT_EQ(node.GetParameterValue(id, &when, &raw, &size), media::kOk) << id;
    return id == PARAM_PROGRAM || id == PARAM_PRESET ? static_cast<float>(std::bit_cast<int32_t>(raw))
                                                      : std::bit_cast<float>(raw);
}

} // namespace vocato::test
