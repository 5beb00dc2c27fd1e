#pragma once

#include <string>

namespace Platform {

/// How a still is to be encoded.
struct ImageEncodingProperties {
    std::u16string Subtype;

    static ImageEncodingProperties CreatePng() { return {u"PNG"}; }
};

} // namespace Platform
