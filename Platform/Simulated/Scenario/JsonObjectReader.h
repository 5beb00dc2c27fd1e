#pragma once

#include <json/json.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Platform::Simulated {

/// A JSON value together with where it stands, "groups[0].id" for instance. Reading it as another type
/// raises winrt::hresult_error, whose text names the file and the place. The value must outlive it.
class JsonPlace {
public:
    JsonPlace(const Json::Value& value, const std::string& file) : JsonPlace(value, file, {}) {}

    bool isNull() const { return _value->isNull(); }
    bool isText() const { return _value->isString(); }
    const Json::Value& value() const { return *_value; }

    bool asBool() const;
    double asDouble() const;
    int asInt() const;
    std::int64_t asCount() const;                     // 0 or more
    std::chrono::milliseconds asMilliseconds() const; // 0 or more, at most some 24 days
    std::uint32_t asUnsigned() const;
    std::string asUtf8() const;
    std::u16string asText() const;
    std::vector<JsonPlace> asList() const;

    /// Raises "FILE: PLACE: reason" as a bad argument.
    [[noreturn]] void raise(const std::string& reason) const;

    JsonPlace member(const std::string& name) const;

private:
    JsonPlace(const Json::Value& value, std::string file, std::string place)
        : _value(&value), _file(std::move(file)), _place(std::move(place)) {}

    const Json::Value* _value;
    std::string _file;
    std::string _place;
};

/// Reads the members of a JSON object. Whoever has read all that it knows calls finish, which raises
/// for members that nobody asked for.
class JsonObjectReader {
public:
    using Use = std::function<void(const JsonPlace&)>;

    /// Raises for a value that is no object.
    explicit JsonObjectReader(JsonPlace place);

    /// The member; raises if it is missing.
    JsonPlace require(const std::string& name);

    /// Calls `use` with the member if it is there.
    void optional(const std::string& name, const Use& use);

    void readBool(const std::string& name, bool& value);
    void readDouble(const std::string& name, double& value);
    void readText(const std::string& name, std::u16string& value);

    void finish() const;

private:
    JsonPlace _place;
    std::set<std::string> _known;
};

} // namespace Platform::Simulated
