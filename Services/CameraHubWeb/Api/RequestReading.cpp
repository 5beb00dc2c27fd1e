#include "Services/CameraHubWeb/Api/RequestReading.h"

#include "Services/CameraHubWeb/Http/Problems.h"
#include "Tools/Text/DurationText.h"
#include "Tools/Text/ExposureText.h"
#include "Tools/Text/TerminalText.h"

#include <json/reader.h>
#include <json/value.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <memory>

namespace CameraHubWeb {
namespace {

using CameraHub::CaptureRequest;
using std::chrono::milliseconds;

constexpr milliseconds usualSettle(250);
constexpr std::size_t longestTicket = 64;
constexpr int narrowest = 16;
constexpr int widest = 8192;

[[noreturn]] void refuse(const std::string& detail) { throw Refused(Problems::invalidRequest(detail)); }

template <typename Number> Number readNumber(const std::string& name, const std::string& text, Number least,
                                             Number most) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end || !(number >= least && number <= most)) {
        const auto shown = [](Number limit) {
            std::string digits = std::to_string(limit);
            if (const auto point = digits.find('.'); point != std::string::npos)
                digits.erase(std::max(digits.find_last_not_of('0'), point - 1) + 1);
            return digits.ends_with('.') ? digits.substr(0, digits.size() - 1) : digits;
        };
        refuse(name + " is a number from " + shown(least) + " to " + shown(most) + ".");
    }
    return number;
}

std::chrono::microseconds readExposure(const std::string& text) {
    const auto exposure = CommandLine::parseExposure(text);
    if (!exposure)
        refuse("exposure is a time such as 20ms, 1/50s or 20000us, from 1us to 2147s.");
    return *exposure;
}

milliseconds readSettle(const std::string& text) {
    const auto settle = CommandLine::parseDuration(text);
    if (!settle || *settle > CaptureRequest::longestSettle)
        refuse("settle is a time such as 250ms or 2s, from 0 to 1min.");
    return *settle;
}

const std::string* parameter(const HttpRequest& request, std::string_view name) {
    const auto found = request.query.find(name);
    return found == request.query.end() ? nullptr : &found->second;
}

Json::Value parseObject(const std::string& body) {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["stackLimit"] = 16;
    builder["collectComments"] = false; // it takes the square of their number
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    if (body.find('\0') != std::string::npos) // the reader takes it for the end
        refuse("The body is a JSON object, such as {\"exposure\": \"20ms\"}.");
    try {
        if (!reader->parse(body.data(), body.data() + body.size(), &value, nullptr) || !value.isObject())
            refuse("The body is a JSON object, such as {\"exposure\": \"20ms\"}.");
    } catch (const Json::Exception&) { // nested too deeply
        refuse("The body is a JSON object, such as {\"exposure\": \"20ms\"}.");
    }
    return value;
}

std::string textOf(const Json::Value& object, const char* name) {
    if (!object[name].isString())
        refuse(std::string(name) + " is a text in quotes.");
    return object[name].asString();
}

int percentOf(const Json::Value& value) {
    if (!value.isInt() || value.asInt() < 0 || value.asInt() > 100)
        refuse("percent is a whole number from 0 to 100.");
    return value.asInt();
}

std::string readTicket(const std::string& text) {
    const auto isPlain = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-';
    };
    if (text.empty() || text.size() > longestTicket || !std::ranges::all_of(text, isPlain))
        refuse("ticket is 1 to 64 letters of ASCII, digits and \"-\".");
    return text;
}

void checkContentType(const HttpRequest& request) {
    const std::string* const type = request.header("content-type");
    std::string bare = type ? type->substr(0, type->find(';')) : "";
    while (bare.ends_with(' '))
        bare.pop_back();
    std::ranges::transform(bare, bare.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (bare != "application/json")
        throw Refused(Problems::unsupportedMediaType());
}

CaptureRequest emptyRequest(const std::string& uid) {
    if (uid.empty() || uid.find('\0') != std::string::npos)
        throw Refused(Problems::noSuchCamera());
    CaptureRequest capture;
    capture.camera = uid;
    capture.settle = usualSettle;
    return capture;
}

[[noreturn]] void refuseBoth() { refuse("A still has an exposure or a percent, not both."); }

} // namespace

void checkParameters(const HttpRequest& request, std::initializer_list<std::string_view> known) {
    for (const auto& [name, value] : request.query)
        if (std::ranges::find(known, name) == known.end())
            refuse("There is no such parameter: \"" + CommandLine::printable(name) + "\".");
}

CaptureRequest readCaptureQuery(const HttpRequest& request, const std::string& uid) {
    CaptureRequest capture = emptyRequest(uid);
    const std::string* const exposure = parameter(request, "exposure");
    const std::string* const percent = parameter(request, "percent");
    if (exposure && percent)
        refuseBoth();
    if (exposure)
        capture.exposure = readExposure(*exposure);
    if (percent)
        capture.exposure = CameraHub::Percent(readNumber("percent", *percent, 0, 100));
    if (const std::string* const settle = parameter(request, "settle"))
        capture.settle = readSettle(*settle);
    return capture;
}

PictureOptions readPictureQuery(const HttpRequest& request) {
    PictureOptions options;
    if (const std::string* const width = parameter(request, "width"))
        options.width = readNumber("width", *width, narrowest, widest);
    if (const std::string* const quality = parameter(request, "quality"))
        options.quality = readNumber("quality", *quality, 1, 100);
    return options;
}

double readFramesPerSecond(const HttpRequest& request) {
    const std::string* const fps = parameter(request, "fps");
    return fps ? readNumber("fps", *fps, 0.1, 30.0) : 2;
}

StillOrder readStillOrder(const HttpRequest& request, const std::string& uid) {
    checkContentType(request);
    StillOrder order{emptyRequest(uid), ""};
    const Json::Value body = parseObject(request.body);
    for (const std::string& name : body.getMemberNames())
        if (name != "exposure" && name != "percent" && name != "settle" && name != "ticket")
            refuse("There is no such member: \"" + CommandLine::printable(name) + "\".");
    if (body.isMember("exposure") && body.isMember("percent"))
        refuseBoth();
    if (body.isMember("exposure"))
        order.capture.exposure = readExposure(textOf(body, "exposure"));
    if (body.isMember("percent"))
        order.capture.exposure = CameraHub::Percent(percentOf(body["percent"]));
    if (body.isMember("settle"))
        order.capture.settle = readSettle(textOf(body, "settle"));
    if (body.isMember("ticket"))
        order.ticket = readTicket(textOf(body, "ticket"));
    return order;
}

} // namespace CameraHubWeb
