// `vocato convert IN -o OUT.mid [...]`: the command-line face of a file conversion.
#pragma once

#include "FileConversion.h"

#include <CLI/CLI.hpp>

#include <string>

namespace vocato::app {

struct ConvertOptions {
    std::string input;
    std::string output;
    ConversionSettings settings;
    bool quiet = false;
};

// Adds the subcommand to `app`; its values land in `options`.
CLI::App* AddConvertCommand(CLI::App& app, ConvertOptions& options);

// The process exit status: 0 on success, 1 with one message on standard error otherwise.
int RunConvert(const ConvertOptions& options);

} // namespace vocato::app
