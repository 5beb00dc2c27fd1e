#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace CommandLine {

/// Options whose values are read as people write them; a value that is none is told with what it is to look like. What
/// they fill in lives as long as the app.

CLI::Option* addExposure(CLI::App& app, const std::string& name, const std::string& help,
                         const std::function<void(std::chrono::microseconds)>& take);

CLI::Option* addDuration(CLI::App& app, const std::string& name, const std::string& help,
                         std::chrono::milliseconds shortest, std::chrono::milliseconds longest,
                         std::chrono::milliseconds& duration);

CLI::Option* addPort(CLI::App& app, const std::string& name, std::uint16_t& port, const std::string& help);

} // namespace CommandLine
