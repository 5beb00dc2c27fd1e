#pragma once

#include <elfutils/libdwfl.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Halden::System {

/// One function at an address; an address in inlined code lies in several.
struct CodePlace {
    std::string function; ///< empty: not known
    std::string source;   ///< "file:line"; empty: not known
};

/// The places of an address, innermost first, at least one. All but the last are inlined.
std::vector<CodePlace> codePlaces(Dwfl* dwfl, std::uint64_t address);

/// "module+0x12ab", or empty if no module is there.
std::string modulePlace(Dwfl* dwfl, std::uint64_t address);

} // namespace Halden::System
