#pragma once

#include "Services/CameraHubWeb/Http/HttpExchange.h"
#include "Services/CameraHubWeb/Http/Problem.h"
#include "Services/CameraHubWeb/Http/Router.h"
#include "Services/CameraHubWeb/Http/Sessions.h"
#include "Services/CameraHubWeb/Http/TokenCheck.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CameraHubWeb {

/// Stands before a handler, and lets in whom it may: requests for this machine, not made by pages of other sites, and
/// with the token, where there is one. With a token it serves /login and /logout.
class Door {
public:
    struct Settings {
        /// What the machine is called besides its addresses and "localhost". Without a token, requests for other hosts
        /// are refused; with one, a page of another host has no cookie of ours.
        std::vector<std::string> hosts;
        /// None: whoever reaches this program may use it.
        std::optional<std::string> token;
        /// Of paths that need no token: their first segments.
        std::vector<std::string> open = {"page", "healthz"};
        /// HTML, with a form that posts "token" to /login.
        std::string loginPage;
        /// The same after a wrong token; empty: the login page.
        std::string wrongTokenPage;
        /// Cookies are for TLS alone.
        bool isTls = false;
        /// For tests.
        std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
    };

    Door(Settings settings, HttpHandler inner);

    Door(const Door&) = delete;
    Door& operator=(const Door&) = delete;

    /// On the server's thread.
    void handle(const std::shared_ptr<HttpExchange>& exchange);

private:
    enum class Verdict : std::uint8_t { Right, Wrong, TooMany };

    void addRoutes();
    bool isForeign(const HttpRequest& request) const;
    bool needsToken(const HttpRequest& request) const;
    bool hasSession(const HttpRequest& request) const;
    /// None: it may go in.
    std::optional<HttpResponse> refusalWithoutToken(const HttpRequest& request);
    /// Counts it where it is wrong.
    Verdict check(const HttpRequest& request, const std::string& token);
    Problem tooManyWrong(const HttpRequest& request) const;
    void showLogin(const std::shared_ptr<HttpExchange>& exchange) const;
    void login(const std::shared_ptr<HttpExchange>& exchange);
    void logout(const std::shared_ptr<HttpExchange>& exchange);
    std::string cookie(const std::string& session, std::chrono::seconds lifetime) const;

    const Settings _settings;
    const HttpHandler _inner;
    const TokenCheck _token;
    Router _router;
    Sessions _sessions;
    WrongTokens _wrongTokens;
};

} // namespace CameraHubWeb
