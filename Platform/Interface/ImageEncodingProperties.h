#pragma once

#include <string>

namespace Platform {

/// How a still is to be encoded. A value. Any thread.
struct ImageEncodingProperties {
    /// "PNG" is the one that platforms take; the rest is refused where the still is asked for.
    std::u16string Subtype;

    /// What the hub asks for its stills: without loss, and the one encoding that no platform refuses.
    static ImageEncodingProperties CreatePng() { return {u"PNG"}; }
};

} // namespace Platform
