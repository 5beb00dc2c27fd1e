#include "Platform/Simulated/Scenario/JsonObjectReader.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/HresultError.h"

#include <utility>

namespace Platform::Simulated {

void JsonPlace::raise(const std::string& reason) const {
    const std::string place = _place.empty() ? "" : _place + ": ";
    throw winrt::hresult_error(winrt::result::invalidArgument, Halden::toUtf16(_file + ": " + place + reason));
}

bool JsonPlace::asBool() const {
    if (!_value->isBool())
        raise("must be true or false");
    return _value->asBool();
}

double JsonPlace::asDouble() const {
    if (!_value->isNumeric())
        raise("must be a number");
    return _value->asDouble();
}

int JsonPlace::asInt() const {
    if (!_value->isInt())
        raise("must be a whole number of 32 bits");
    return _value->asInt();
}

std::int64_t JsonPlace::asCount() const {
    if (!_value->isInt64() || _value->asInt64() < 0)
        raise("must be a whole number, 0 or more");
    return _value->asInt64();
}

std::chrono::milliseconds JsonPlace::asMilliseconds() const {
    if (!_value->isInt() || _value->asInt() < 0)
        raise("must be a whole number of milliseconds, 0 or more");
    return std::chrono::milliseconds(_value->asInt());
}

std::uint32_t JsonPlace::asUnsigned() const {
    if (!_value->isUInt())
        raise("must be a whole number, 0 or more");
    return _value->asUInt();
}

std::string JsonPlace::asUtf8() const {
    if (!isText())
        raise("must be a text");
    return _value->asString();
}

std::u16string JsonPlace::asText() const {
    const std::string text = asUtf8();
    std::u16string converted = Halden::toUtf16(text);
    if (converted.empty() && !text.empty())
        raise("is not well-formed text");
    return converted;
}

std::vector<JsonPlace> JsonPlace::asList() const {
    if (!_value->isArray())
        raise("must be a list");
    std::vector<JsonPlace> items;
    items.reserve(_value->size());
    for (Json::ArrayIndex i = 0; i < _value->size(); ++i)
        items.push_back({(*_value)[i], _file, _place + "[" + std::to_string(i) + "]"});
    return items;
}

JsonPlace JsonPlace::member(const std::string& name) const {
    return {(*_value)[name], _file, _place.empty() ? name : _place + "." + name};
}

JsonObjectReader::JsonObjectReader(JsonPlace place) : _place(std::move(place)) {
    if (!_place.value().isObject())
        _place.raise("must be an object");
}

JsonPlace JsonObjectReader::require(const std::string& name) {
    _known.insert(name);
    JsonPlace member = _place.member(name);
    if (!_place.value().isMember(name))
        member.raise("is missing");
    return member;
}

void JsonObjectReader::optional(const std::string& name, const Use& use) {
    _known.insert(name);
    if (_place.value().isMember(name))
        use(_place.member(name));
}

void JsonObjectReader::readBool(const std::string& name, bool& value) {
    optional(name, [&](const JsonPlace& place) { value = place.asBool(); });
}

void JsonObjectReader::readDouble(const std::string& name, double& value) {
    optional(name, [&](const JsonPlace& place) { value = place.asDouble(); });
}

void JsonObjectReader::readText(const std::string& name, std::u16string& value) {
    optional(name, [&](const JsonPlace& place) { value = place.asText(); });
}

void JsonObjectReader::finish() const {
    for (const std::string& name : _place.value().getMemberNames())
        if (!_known.contains(name))
            _place.member(name).raise("is not known here");
}

} // namespace Platform::Simulated
