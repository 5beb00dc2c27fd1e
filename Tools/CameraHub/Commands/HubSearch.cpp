#include "Tools/CameraHub/Commands/HubSearch.h"

#include "Tools/CameraHub/Terminal/ExitCode.h"

#include <avahi-client/client.h>
#include <avahi-client/lookup.h>
#include <avahi-common/address.h>
#include <avahi-common/error.h>
#include <avahi-common/simple-watch.h>
#include <net/if.h>

#include <array>
#include <map>
#include <memory>
#include <tuple>

namespace CommandLine {
namespace {

constexpr auto serviceType = "_camera-hub._tcp";
constexpr int stepInMs = 100;

struct Free {
    void operator()(AvahiSimplePoll* poll) const { avahi_simple_poll_free(poll); }
    void operator()(AvahiClient* client) const { avahi_client_free(client); }
};

[[noreturn]] void failWithoutDaemon(int error) {
    throw Failure(ExitCode::NothingFound, std::string("cannot look for hubs: ") + avahi_strerror(error) +
                                              "; start avahi-daemon on this machine, or name the hub's by --host");
}

std::string addressText(const AvahiAddress& address, AvahiIfIndex interface) {
    std::array<char, AVAHI_ADDRESS_STR_MAX> text{};
    avahi_address_snprint(text.data(), text.size(), &address);
    std::array<char, IF_NAMESIZE> name{};
    const bool isOfLink = std::string(text.data()).starts_with("fe80:");
    if (isOfLink && if_indextoname(static_cast<unsigned>(interface), name.data()))
        return std::string(text.data()) + "%" + name.data();
    return text.data();
}

/// What the daemon's answers are collected in. The daemon's objects belong to the client, which frees them.
class Search {
public:
    Search() : _poll(avahi_simple_poll_new()) {
        int error = 0;
        _client.reset(avahi_client_new(avahi_simple_poll_get(_poll.get()), {}, onClient, this, &error));
        if (!_client)
            failWithoutDaemon(error);
        if (!avahi_service_browser_new(_client.get(), AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, serviceType, nullptr, {},
                                       onBrowsed, this))
            failWithoutDaemon(avahi_client_errno(_client.get()));
    }

    /// False once there is nothing left to come.
    bool step() {
        if (avahi_simple_poll_iterate(_poll.get(), stepInMs) != 0 || _failure != 0)
            failWithoutDaemon(_failure == 0 ? AVAHI_ERR_DISCONNECTED : _failure);
        return !_isAllTold || _resolving > 0;
    }

    std::vector<FoundHub> found() const {
        std::vector<FoundHub> hubs;
        hubs.reserve(_hubs.size());
        for (const auto& [key, hub] : _hubs)
            hubs.push_back(hub);
        return hubs;
    }

private:
    static void onClient(AvahiClient* client, AvahiClientState state, void* self) {
        if (state == AVAHI_CLIENT_FAILURE)
            static_cast<Search*>(self)->_failure = avahi_client_errno(client);
    }

    static void onBrowsed(AvahiServiceBrowser* browser, AvahiIfIndex interface, AvahiProtocol protocol,
                          AvahiBrowserEvent event, const char* name, const char* type, const char* domain,
                          AvahiLookupResultFlags, void* self) {
        auto& search = *static_cast<Search*>(self);
        AvahiClient* const client = avahi_service_browser_get_client(browser);
        if (event == AVAHI_BROWSER_FAILURE)
            search._failure = avahi_client_errno(client);
        else if (event == AVAHI_BROWSER_ALL_FOR_NOW)
            search._isAllTold = true;
        else if (event == AVAHI_BROWSER_NEW &&
                 avahi_service_resolver_new(client, interface, protocol, name, type, domain, AVAHI_PROTO_UNSPEC, {},
                                            onResolved, self))
            ++search._resolving;
    }

    static void onResolved(AvahiServiceResolver* resolver, AvahiIfIndex interface, AvahiProtocol,
                           AvahiResolverEvent event, const char* name, const char*, const char*, const char* host,
                           const AvahiAddress* address, std::uint16_t port, AvahiStringList*, AvahiLookupResultFlags,
                           void* self) {
        auto& search = *static_cast<Search*>(self);
        --search._resolving;
        if (event == AVAHI_RESOLVER_FOUND) {
            FoundHub& hub = search._hubs[{name, host, port}];
            hub.name = name;
            hub.host = host;
            hub.port = port;
            hub.addresses.insert(addressText(*address, interface));
        }
        avahi_service_resolver_free(resolver);
    }

    std::map<std::tuple<std::string, std::string, std::uint16_t>, FoundHub> _hubs;
    int _failure = 0;
    int _resolving = 0;
    bool _isAllTold = false;
    std::unique_ptr<AvahiSimplePoll, Free> _poll;
    std::unique_ptr<AvahiClient, Free> _client; // before the poll goes
};

} // namespace

std::vector<FoundHub> searchHubs(std::chrono::milliseconds time, const std::function<void()>& check) {
    const auto end = std::chrono::steady_clock::now() + time;
    Search search;
    while (search.step() && std::chrono::steady_clock::now() < end)
        check();
    check();
    return search.found();
}

} // namespace CommandLine
