#include "Framework/CXX/Json/ValueReading.h"

#include <limits>
#include <stdexcept>

namespace Halden {

namespace {

using IntLimits = std::numeric_limits<int>;

const Json::Value& memberOfObject(const Json::Value& object, std::string_view name) {
    const Json::Value* const found = object.find(name.data(), name.data() + name.size());
    return found ? *found : Json::Value::nullSingleton();
}

int intOfReal(double value) {
    if (!(value >= IntLimits::min() && value <= IntLimits::max()))
        throw std::runtime_error("Real out of signed integer range");
    return static_cast<int>(value);
}

int intOfWholeNumber(const Json::Value& value) {
    // One text for both ends of the range and both kinds of whole numbers.
    if (!value.isInt())
        throw std::runtime_error("unsigned integer out of signed int range");
    return value.asInt();
}

} // namespace

const Json::Value& member(const Json::Value& request, std::string_view name) {
    switch (request.type()) {
    case Json::objectValue:
        return memberOfObject(request, name);
    case Json::arrayValue:
    case Json::nullValue:
        return Json::Value::nullSingleton();
    default:
        throw std::runtime_error("Type has no members");
    }
}

const Json::Value& member(const Json::Value& request, std::string_view object, std::string_view name) {
    const Json::Value& inner = member(request, object);
    return inner.isObject() ? memberOfObject(inner, name) : Json::Value::nullSingleton();
}

std::string asString(const Json::Value& value) {
    switch (value.type()) {
    case Json::nullValue:
        return {};
    case Json::stringValue:
        return value.asString();
    case Json::booleanValue:
        return value.asBool() ? "true" : "false";
    default:
        throw std::runtime_error("Type is not convertible to string");
    }
}

int asInt(const Json::Value& value) {
    switch (value.type()) {
    case Json::nullValue:
        return 0;
    case Json::intValue:
    case Json::uintValue:
        return intOfWholeNumber(value);
    case Json::realValue:
        return intOfReal(value.asDouble());
    case Json::booleanValue:
        return value.asBool() ? 1 : 0;
    default:
        throw std::runtime_error("Type is not convertible to int");
    }
}

double asDouble(const Json::Value& value) {
    switch (value.type()) {
    case Json::nullValue:
        return 0.0;
    case Json::intValue:
    case Json::uintValue:
    case Json::realValue:
        return value.asDouble();
    case Json::booleanValue:
        return value.asBool() ? 1.0 : 0.0;
    default:
        throw std::runtime_error("Type is not convertible to double");
    }
}

} // namespace Halden
