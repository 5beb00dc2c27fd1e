#include "Tools/CameraHub/Commands/FindCommand.h"

#include "Tools/CameraHub/Commands/HubSearch.h"
#include "Tools/CameraHub/Terminal/ExitCode.h"
#include "Tools/CameraHub/Terminal/Terminal.h"
#include "Tools/Text/Table.h"
#include "Tools/Text/TerminalText.h"

#include <unistd.h>

#include <optional>
#include <vector>

namespace CommandLine {
namespace {

Json::Value asJson(const std::vector<FoundHub>& hubs) {
    Json::Value list(Json::arrayValue);
    for (const FoundHub& hub : hubs) {
        Json::Value& entry = list.append(Json::Value(Json::objectValue));
        entry["name"] = hub.name;
        entry["host"] = hub.host;
        entry["port"] = hub.port;
        entry["addresses"] = Json::Value(Json::arrayValue);
        for (const std::string& address : hub.addresses)
            entry["addresses"].append(address);
    }
    return list;
}

std::string asTable(const std::vector<FoundHub>& hubs) {
    Table table({{"Name", false, true}, {"Host", false, true}, {"Port", true}, {"Addresses", false, true}});
    for (const FoundHub& hub : hubs) {
        std::string addresses;
        for (const std::string& address : hub.addresses)
            addresses += (addresses.empty() ? "" : " ") + address;
        table.add({printable(hub.name), printable(hub.host), std::to_string(hub.port), printable(addresses)});
    }
    const std::optional<TerminalSize> terminal = terminalSize(STDOUT_FILENO);
    return table.text(terminal ? std::optional(terminal->columns) : std::nullopt);
}

} // namespace

void find(const Session& session, const FindOptions& options) {
    const std::vector<FoundHub> hubs = [&] {
        const Progress progress = session.waitFor("hubs that announce themselves");
        return searchHubs(options.timeout, Interruption::check);
    }();
    if (session.options().isJson)
        Session::printJson(asJson(hubs));
    else if (!hubs.empty())
        Session::print(asTable(hubs));
    if (hubs.empty())
        throw Failure(ExitCode::NothingFound, "no hub announces itself on this network; give its machine by --host");
}

} // namespace CommandLine
