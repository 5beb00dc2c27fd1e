#include "Tools/CameraHub/Commands/ArgumentReading.h"

#include "Tools/Text/DurationText.h"
#include "Tools/Text/ExposureText.h"

namespace CommandLine {
namespace {

/// Without the short one before it.
std::string longName(const std::string& name) { return name.substr(name.find("--")); }

} // namespace

CLI::Option* addExposure(CLI::App& app, const std::string& name, const std::string& help,
                         const std::function<void(std::chrono::microseconds)>& take) {
    const auto read = [name, take](const CLI::results_t& texts) {
        const std::string& text = texts.back();
        const auto exposure = parseExposure(text);
        if (!exposure)
            throw CLI::ValidationError(longName(name),
                                       "\"" + text + "\" is no exposure, such as 20ms, 1/50s or 20000us");
        take(*exposure);
        return true;
    };
    return app.add_option(name, CLI::callback_t(read), help)->option_text("TIME");
}

CLI::Option* addDuration(CLI::App& app, const std::string& name, const std::string& help,
                         std::chrono::milliseconds shortest, std::chrono::milliseconds longest,
                         std::chrono::milliseconds& duration) {
    const auto read = [name, shortest, longest, &duration](const CLI::results_t& texts) {
        const std::string& text = texts.back();
        const auto parsed = parseDuration(text);
        if (!parsed)
            throw CLI::ValidationError(longName(name), "\"" + text + "\" is no time, such as 250ms, 10s or 2min");
        if (*parsed < shortest || *parsed > longest)
            throw CLI::ValidationError(longName(name),
                                       "from " + durationText(shortest) + " to " + durationText(longest));
        duration = *parsed;
        return true;
    };
    return app.add_option(name, CLI::callback_t(read), help)->option_text("TIME");
}

CLI::Option* addPort(CLI::App& app, const std::string& name, std::uint16_t& port, const std::string& help) {
    return app.add_option(name, port, help)->option_text("PORT")->check(CLI::Range(1, 65535));
}

} // namespace CommandLine
