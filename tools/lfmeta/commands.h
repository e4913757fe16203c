// The subcommands, one file each. A command adds its options to the app and, when it is the one
// that was asked for, runs while the command line is parsed and leaves its exit status.
#pragma once

#include <CLI/CLI.hpp>

void addReadCommand(CLI::App& app, int& exitStatus);
void addSettingsCommand(CLI::App& app, int& exitStatus);
void addTiffCommand(CLI::App& app, int& exitStatus);
void addIccCommand(CLI::App& app, int& exitStatus);
void addExifCommand(CLI::App& app, int& exitStatus);
void addHdrCommand(CLI::App& app, int& exitStatus);
