#pragma once

#include <functional>

namespace Platform::Imaging::Png {

/// Lets another thread run the work: at once, late, or never where there is none. Neither waits for it nor throws.
using RunBeside = std::function<void(std::function<void()> work)>;

} // namespace Platform::Imaging::Png
