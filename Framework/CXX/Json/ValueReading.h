#pragma once

#include <json/value.h>

#include <string>
#include <string_view>

/// Reading of requests: what the protocol expects of members and conversions, which is more lenient with
/// containers and stricter with types than the library. Every failure is a std::runtime_error.
namespace Halden {

/// A member of the request itself; the null value if there is none. An array or null at the root has no
/// members; a number, string or boolean there raises.
const Json::Value& member(const Json::Value& request, std::string_view name);

/// A member of a member of the request; the null value if there is none. What is no object has no members, but
/// the request itself raises as in member().
const Json::Value& member(const Json::Value& request, std::string_view object, std::string_view name);

/// null is empty, booleans become their words; everything but these and strings raises.
std::string asString(const Json::Value& value);

/// null is 0, booleans are 1 and 0, fractions are cut off; containers, strings and what lies outside 32
/// signed bits raise.
int asInt(const Json::Value& value);

/// null is 0.0, booleans are 1.0 and 0.0; containers and strings raise.
double asDouble(const Json::Value& value);

} // namespace Halden
