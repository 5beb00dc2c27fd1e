#include "Services/CameraHubWeb/Arguments.h"

#include "Tools/Text/DurationText.h"

#include <arpa/inet.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <iostream>
#include <sstream>
#include <string_view>

namespace CameraHubWeb {
namespace {

constexpr auto description = "Shows the cameras of a Camera Hub in the browser, and gives their stills by HTTP.";

constexpr auto footer = R"(Examples:
  camera-hub-web
  camera-hub-web --hub lab.example --listen 127.0.0.1:8081
  camera-hub-web --listen 0.0.0.0:8443 --token-file token --tls-certificate cert.pem --tls-key key.pem

Exit codes: 0 ended as it was told, 1 could not start, 2 wrong usage.)";

constexpr auto listenHelp =
    "Where to listen: ADDRESS:PORT, [::1]:PORT for IPv6\n(default: 127.0.0.1:8080, this machine only)";
constexpr auto tokenHelp = "A file whose first line, of 16 characters or more,\nis what clients have to know";
constexpr auto noTokenHelp = "Listen beyond this machine without a token: who\nreaches the port sees the cameras";
constexpr auto nameHelp =
    "A name that clients reach this program by, besides\nthose of this machine; may be given several times";
constexpr auto keepHelp = "How many stills are kept in memory (default: 32)";
constexpr auto memoryHelp = "How much memory they may take, in MiB (default: 256)";
constexpr auto idleHelp = "How long a camera stays open after its last still\n(default: 60s)";
constexpr auto connectionsHelp = "How many connections at once (default: 1024)";

/// "127.0.0.1:8080", "[::1]:8080".
void readListen(const std::string& text, Arguments& arguments) {
    const auto colon = text.rfind(':');
    std::string address = text.substr(0, colon);
    if (address.starts_with('[') && address.ends_with(']'))
        address = address.substr(1, address.size() - 2);
    else if (address.find(':') != std::string::npos)
        address.clear(); // an IPv6 address without brackets
    std::array<unsigned char, sizeof(in6_addr)> bytes{};
    const bool isAddress = inet_pton(AF_INET, address.c_str(), bytes.data()) == 1 ||
                           inet_pton(AF_INET6, address.c_str(), bytes.data()) == 1;
    const std::string_view port = colon == std::string::npos ? "" : std::string_view(text).substr(colon + 1);
    const auto read = std::from_chars(port.data(), port.data() + port.size(), arguments.port);
    if (!isAddress || port.empty() || read.ec != std::errc() || read.ptr != port.data() + port.size())
        throw CLI::ValidationError("--listen", "\"" + text + "\" is no address with a port, such as 127.0.0.1:8080");
    arguments.address = address;
}

/// What is wrong with it; empty if nothing is.
std::string checkHost(const std::string& text) {
    const auto mayStand = [](unsigned char c) {
        return (c < 0x80 && std::isalnum(c)) || std::string_view(".-_:%").find(char(c)) != std::string_view::npos;
    };
    return !text.empty() && std::ranges::all_of(text, mayStand) ? "" : "\"" + text + "\" is no name of a host";
}

void addDuration(CLI::App& app, const std::string& name, const char* help, std::chrono::milliseconds& duration) {
    const auto read = [name, &duration](const CLI::results_t& texts) {
        const auto parsed = CommandLine::parseDuration(texts.back());
        if (!parsed)
            throw CLI::ValidationError(name, "\"" + texts.back() + "\" is no time, such as 10s or 2min");
        duration = *parsed;
        return true;
    };
    app.add_option(name, CLI::callback_t(read), help)->option_text("TIME");
}

void addOptions(CLI::App& app, Arguments& arguments, TlsFiles& tls) {
    const auto listen = [&arguments](const CLI::results_t& texts) {
        readListen(texts.back(), arguments);
        return true;
    };
    app.add_option("--listen", CLI::callback_t(listen), listenHelp)->option_text("WHERE");
    app.add_option("--hub", arguments.hub.host, "The machine of the hub (default: localhost)")
        ->option_text("HOST")
        ->check(checkHost);
    app.add_option("--hub-port", arguments.hub.messagePort, "The hub's port for messages (default: 3141)")
        ->option_text("PORT")
        ->check(CLI::Range(1, 65535));
    app.add_option("--hub-image-port", arguments.hub.imagePort, "The hub's port for images (default: 3142)")
        ->option_text("PORT")
        ->check(CLI::Range(1, 65535));
    CLI::Option* const certificate =
        app.add_option("--tls-certificate", tls.certificate, "Serve HTTPS, with this chain (PEM)")->option_text("FILE");
    CLI::Option* const key = app.add_option("--tls-key", tls.key, "The certificate's key (PEM)")->option_text("FILE");
    certificate->needs(key);
    key->needs(certificate);
    app.add_option("--token-file", arguments.tokenFile, tokenHelp)->option_text("FILE");
    app.add_flag("--no-token", arguments.isOpen, noTokenHelp);
    app.add_option("--allow-host", arguments.names, nameHelp)
        ->option_text("NAME")
        ->expected(1)
        ->take_all()
        ->check(checkHost);
    app.add_option("--keep", arguments.keptStills, keepHelp)->option_text("N")->check(CLI::Range(1, 10000));
    app.add_option("--keep-memory", arguments.keptMemory, memoryHelp)->option_text("MIB")->check(CLI::Range(1, 65536));
    addDuration(app, "--idle", idleHelp, arguments.idleTime);
    app.add_option("--max-connections", arguments.connections, connectionsHelp)
        ->option_text("N")
        ->check(CLI::Range(1, 100000));
    app.set_version_flag("--version", "camera-hub-web " PROGRAM_VERSION, "Print the version of this program and end");
}

void checkTogether(const Arguments& arguments) {
    if (arguments.isOpen && !arguments.tokenFile.empty())
        throw UsageError("--no-token and --token-file exclude each other");
    if (!isOfThisMachine(arguments.address) && arguments.tokenFile.empty() && !arguments.isOpen)
        throw UsageError("who reaches " + arguments.address +
                         " would see the cameras: give a --token-file, or say --no-token if that is meant");
}

} // namespace

bool isOfThisMachine(const std::string& address) { return address == "::1" || address.starts_with("127."); }

std::optional<Arguments> parseArguments(int count, const char* const* texts) {
    Arguments arguments;
    TlsFiles tls;
    CLI::App app(description, "camera-hub-web");
    app.footer(footer);
    app.get_formatter()->column_width(30);
    addOptions(app, arguments, tls);
    try {
        app.parse(count, texts);
    } catch (const CLI::Success& asked) {
        app.exit(asked, std::cout, std::cout);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        std::string text = error.what();
        text.erase(std::min(text.find('\n'), text.size()));
        throw UsageError(text + "; see: camera-hub-web --help");
    }
    if (!tls.certificate.empty())
        arguments.tls = tls;
    checkTogether(arguments);
    return arguments;
}

} // namespace CameraHubWeb
