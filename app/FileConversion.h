// A sound file through the converter node, as fast as the machine allows, recorded as the
// window records and exported as a Standard MIDI File.
#pragma once

#include "NodeRequests.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace vocato::app {

struct ConversionSettings : NodeRequests {
    int8_t channel = 1;
    bool median = false;
    bool confirm = false;
};

struct ConversionReport {
    bool ok = false;
    std::string error; // one sentence when !ok
    size_t notes = 0;
    size_t events = 0;
    double audioSeconds = 0.0;
    double sampleRate = 0.0;
    uint32_t channels = 0;
};

// Called now and then with the share of the file done, 0 ... 1.
using ProgressCallback = std::function<void(double)>;

// Writes `output` only when the whole conversion succeeded; a file already there survives
// any failure.
ConversionReport ConvertFile(const std::string& input, const std::string& output,
                             const ConversionSettings& settings, const ProgressCallback& progress);

} // namespace vocato::app
