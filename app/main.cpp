// The vocato executable: one subcommand per headless role; the window comes with no
// subcommand.
#include "ConvertCommand.h"
#include "LiveRoles.h"
#include "RoleChoice.h"

#include <CLI/CLI.hpp>

#include <iostream>

int main(int argc, char** argv) {
    if (vocato::IsWindowRole(argc, argv)) {
        return vocato::RunWindowRoleFromModule(argc, argv);
    }
    CLI::App app{"Vocato turns a voice or a monophonic instrument into MIDI.", "vocato"};
    app.require_subcommand(0, 1);

    vocato::app::ConvertOptions convert;
    CLI::App* convertCommand = vocato::app::AddConvertCommand(app, convert);
    vocato::app::LiveOptions live;
    CLI::App* liveCommand = vocato::app::AddLiveCommand(app, live);

    CLI11_PARSE(app, argc, argv);
    if (convertCommand->parsed()) {
        return vocato::app::RunConvert(convert);
    }
    if (liveCommand->parsed()) {
        return vocato::RunLiveFromModule(live);
    }
    std::cout << app.help();
    return 0;
}
