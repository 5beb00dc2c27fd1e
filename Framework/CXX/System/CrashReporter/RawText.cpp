#include "Framework/CXX/System/CrashReporter/RawText.h"

#include <unistd.h>

#include <cerrno>

namespace Halden::System {

void writeAll(int descriptor, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR)
            return;
        if (written > 0)
            text.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace Halden::System
