#include "Services/CameraHubWeb/Http/Door.h"

#include "Services/CameraHubWeb/Http/HostNames.h"
#include "Services/CameraHubWeb/Http/Problems.h"
#include "Services/CameraHubWeb/Http/RequestDecoding.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace CameraHubWeb {
namespace {

using Segments = std::vector<std::string>;

constexpr std::string_view cookieName = "camera_hub_session";

std::string headerOf(const HttpRequest& request, std::string_view name) {
    const std::string* const value = request.header(name);
    return value ? *value : std::string();
}

bool isReading(const HttpRequest& request) { return request.method == "GET" || request.method == "HEAD"; }

/// A person who follows a link or types an address, to a page that does nothing by being opened.
bool isVisit(const HttpRequest& request) {
    return isReading(request) && headerOf(request, "sec-fetch-mode") == "navigate" &&
           headerOf(request, "sec-fetch-dest") == "document" &&
           (request.segments.empty() || request.segments == Segments{"login"});
}

/// Empty where there is none.
std::string sessionOf(const HttpRequest& request) {
    const std::string header = headerOf(request, "cookie");
    std::string_view rest = header;
    while (!rest.empty()) {
        const auto end = std::min(rest.find_first_of(";,"), rest.size());
        std::string_view pair = rest.substr(0, end);
        pair.remove_prefix(std::min(pair.find_first_not_of(' '), pair.size()));
        const auto equals = pair.find('=');
        if (equals != std::string_view::npos && pair.substr(0, equals) == cookieName)
            return std::string(pair.substr(equals + 1));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return "";
}

/// The token is often pasted, with what was around it.
std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

HttpResponse goTo(const char* path) {
    HttpResponse response;
    response.status = 303;
    response.headers = {{"Location", path}, {"Cache-Control", "no-store"}};
    return response;
}

} // namespace

Door::Door(Settings settings, HttpHandler inner)
    : _settings(std::move(settings)), _inner(std::move(inner)), _token(_settings.token.value_or("")) {
    if (_settings.token)
        addRoutes();
}

void Door::addRoutes() {
    using Exchange = std::shared_ptr<HttpExchange>;
    _router.add("GET", {"login"}, [this](const Exchange& exchange, const Segments&) { showLogin(exchange); });
    _router.add("POST", {"login"}, [this](const Exchange& exchange, const Segments&) { login(exchange); });
    _router.add("POST", {"logout"}, [this](const Exchange& exchange, const Segments&) { logout(exchange); });
}

void Door::handle(const std::shared_ptr<HttpExchange>& exchange) {
    const HttpRequest& request = exchange->request();
    if (!_settings.token && !isHostOurs(headerOf(request, "host"), _settings.hosts)) {
        exchange->send(problemResponse(Problems::misdirected()));
        return;
    }
    if (isForeign(request)) {
        exchange->send(problemResponse(Problems::forbidden()));
        return;
    }
    if (_settings.token && (request.segments == Segments{"login"} || request.segments == Segments{"logout"})) {
        _router.handle(exchange);
        return;
    }
    if (needsToken(request) && !hasSession(request))
        if (auto refusal = refusalWithoutToken(request)) {
            exchange->send(*std::move(refusal));
            return;
        }
    _inner(exchange);
}

bool Door::isForeign(const HttpRequest& request) const {
    const std::string* const site = request.header("sec-fetch-site");
    if (site && *site != "same-origin" && *site != "none" && !isVisit(request))
        return true;
    const std::string* const origin = request.header("origin");
    return origin && !isReading(request) && !isOriginOfHost(*origin, headerOf(request, "host"));
}

bool Door::needsToken(const HttpRequest& request) const {
    const auto& open = _settings.open;
    return _settings.token &&
           (request.segments.empty() || std::find(open.begin(), open.end(), request.segments.front()) == open.end());
}

bool Door::hasSession(const HttpRequest& request) const { return _sessions.has(sessionOf(request), _settings.now()); }

std::optional<HttpResponse> Door::refusalWithoutToken(const HttpRequest& request) {
    const std::string* const authorization = request.header("authorization");
    if (const auto offered = authorization ? offeredToken(*authorization) : std::nullopt) {
        const Verdict verdict = check(request, *offered);
        if (verdict == Verdict::Right)
            return std::nullopt;
        if (verdict == Verdict::TooMany)
            return problemResponse(tooManyWrong(request));
    }
    const bool isPage = headerOf(request, "accept").find("text/html") != std::string::npos;
    if (!authorization && isReading(request) && isPage)
        return goTo("/login");
    HttpResponse response = problemResponse(Problems::unauthorized());
    response.headers.emplace_back("WWW-Authenticate",
                                  "Bearer realm=\"camera-hub-web\", Basic realm=\"camera-hub-web\", charset=\"UTF-8\"");
    return response;
}

Door::Verdict Door::check(const HttpRequest& request, const std::string& token) {
    const auto now = _settings.now();
    if (_wrongTokens.waitFor(request.peer, now).count() > 0)
        return Verdict::TooMany; // without a look at it: it may be a guess
    if (_token.matches(token))
        return Verdict::Right;
    _wrongTokens.add(request.peer, now);
    return Verdict::Wrong;
}

Problem Door::tooManyWrong(const HttpRequest& request) const {
    return Problems::tooMany("Too many wrong tokens came from this machine.",
                             static_cast<int>(_wrongTokens.waitFor(request.peer, _settings.now()).count()));
}

void Door::showLogin(const std::shared_ptr<HttpExchange>& exchange) const {
    const bool wasWrong = exchange->request().query.contains("wrong") && !_settings.wrongTokenPage.empty();
    HttpResponse response =
        textResponse(200, "text/html; charset=utf-8", wasWrong ? _settings.wrongTokenPage : _settings.loginPage);
    response.headers.emplace_back("Cache-Control", "no-store");
    exchange->send(std::move(response));
}

void Door::login(const std::shared_ptr<HttpExchange>& exchange) {
    constexpr const char* kind = "application/x-www-form-urlencoded";
    const HttpRequest& request = exchange->request();
    if (!headerOf(request, "content-type").starts_with(kind)) {
        exchange->send(problemResponse(Problems::unsupportedMediaType(kind)));
        return;
    }
    std::string token;
    try {
        token = trimmed(decodeForm(request.body)["token"]);
    } catch (const std::invalid_argument&) {
        exchange->send(problemResponse(Problems::invalidRequest("The form cannot be decoded.")));
        return;
    }
    const Verdict verdict = check(request, token);
    if (verdict == Verdict::TooMany) {
        exchange->send(problemResponse(tooManyWrong(request)));
        return;
    }
    HttpResponse response = goTo(verdict == Verdict::Right ? "/" : "/login?wrong");
    if (verdict == Verdict::Right)
        response.headers.emplace_back("Set-Cookie", cookie(_sessions.begin(_settings.now()), Sessions::lifetime));
    exchange->send(std::move(response));
}

void Door::logout(const std::shared_ptr<HttpExchange>& exchange) {
    _sessions.end(sessionOf(exchange->request()));
    HttpResponse response = goTo("/login");
    response.headers.emplace_back("Set-Cookie", cookie("", std::chrono::seconds(0)));
    exchange->send(std::move(response));
}

std::string Door::cookie(const std::string& session, std::chrono::seconds lifetime) const {
    return std::string(cookieName) + "=" + session + "; Path=/; Max-Age=" + std::to_string(lifetime.count()) +
           "; HttpOnly; SameSite=Strict" + (_settings.isTls ? "; Secure" : "");
}

} // namespace CameraHubWeb
