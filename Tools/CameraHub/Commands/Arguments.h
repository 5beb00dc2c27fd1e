#pragma once

#include "Tools/CameraHub/Commands/BracketCommand.h"
#include "Tools/CameraHub/Commands/CaptureCommand.h"
#include "Tools/CameraHub/Commands/FindCommand.h"
#include "Tools/CameraHub/Commands/HubCommands.h"
#include "Tools/CameraHub/Commands/ListCommand.h"

#include <optional>
#include <variant>

namespace CommandLine {

struct VersionOptions {};

/// What the command line says.
struct Arguments {
    GlobalOptions global;
    std::variant<ListOptions, CaptureOptions, BracketOptions, FindOptions, VersionOptions, DiagnosticsOptions,
                 HealthOptions>
        command;
};

/// None where help or the version was asked for, which is then printed. Throws Failure where the line is wrong.
std::optional<Arguments> parseArguments(int count, const char* const* texts);

} // namespace CommandLine
