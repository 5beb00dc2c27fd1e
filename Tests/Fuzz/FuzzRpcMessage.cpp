// A message of a client: parsing, the reading of its members, and writing it out again.

#include "Framework/CXX/Json/HaldenPlainWriter.h"
#include "Framework/CXX/Json/MessageParsing.h"
#include "Framework/CXX/Json/ValueReading.h"
#include "Tests/Fuzz/FuzzTarget.h"

#include <stdexcept>

namespace {

/// Whatever the message is, a reading of it succeeds or raises this one type.
template <typename Reading> void mayRaise(Reading reading) {
    try {
        reading();
    } catch (const std::runtime_error&) {
    }
}

} // namespace

void fuzz(const std::uint8_t* data, std::size_t size) {
    Json::Value message;
    std::string errors;
    if (!Halden::parseMessage(std::string(reinterpret_cast<const char*>(data), size), message, errors)) {
        require(!errors.empty(), "a message that cannot be parsed has an error to log");
        return;
    }
    mayRaise([&] { Halden::asString(Halden::member(message, "method")); });
    mayRaise([&] { Halden::asString(Halden::member(message, "params", "to")); });
    mayRaise([&] { Halden::asInt(Halden::member(message, "params", "exposureInUs")); });
    mayRaise([&] { Halden::asDouble(Halden::member(message, "params", "exposureInPercent")); });

    const std::string written = Json::HaldenPlainWriter().write(message);
    require(written.find('\n') == std::string::npos, "a written message is one line");
    Json::Value again;
    require(Halden::parseMessage(written, again, errors), "what has been written can be parsed");
    require(Json::HaldenPlainWriter().write(again) == written, "writing what was written changes nothing");
}

std::vector<std::string> fuzzSeeds() {
    return {R"({"id":1,"method":"camera:version"})",
            R"({"id":"two","method":"camera:capture","params":{"to":"camera","exposureInUs":20000,)"
            R"("exposureInPercent":12.5,"exposureChangeDelayInMs":0}})",
            R"([1,-2.75e3,true,false,null,"\u00e9\n\"", {"a":[{}]}] // rest)",
            "4294967296",
            "[1e308,-1e999,0.1]",
            "\"\xC3\xA9\xFF\""};
}
