#pragma once

#include "Services/CameraHubWeb/Http/HttpMessage.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CameraHubWeb {

/// What a request's target consists of.
struct DecodedTarget {
    std::vector<std::string> segments;
    std::map<std::string, std::string, std::less<>> query;
};

/// Throws std::invalid_argument, its text a sentence for the one who sent it, where it does not begin with a slash, has
/// bytes that a target may not have, or cannot be decoded.
DecodedTarget decodeTarget(std::string_view target);

/// Names and values as forms send them, a plus being a space. Throws std::invalid_argument where it cannot be decoded,
/// is not UTF-8, has a zero byte or a name twice.
std::map<std::string, std::string, std::less<>> decodeForm(std::string_view text);

/// Whether it is UTF-8 as it should be: shortest forms, no surrogates.
bool isUtf8(std::string_view text);

} // namespace CameraHubWeb
