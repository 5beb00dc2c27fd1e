#include "Platform/Simulated/Scenario/FileText.h"

#include "Platform/Shared/ErrnoError.h"
#include "Platform/Shared/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace Platform::Simulated {

std::string readFileText(const std::filesystem::path& file) {
    const Shared::FileDescriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!descriptor.isOpen())
        throw Shared::errnoError("open", file.native(), errno);
    std::string text;
    std::array<char, 65536> block{};
    for (;;) {
        const ssize_t count = ::read(descriptor.get(), block.data(), block.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw Shared::errnoError("read", file.native(), errno);
        if (count == 0)
            return text;
        text.append(block.data(), static_cast<std::size_t>(count));
    }
}

} // namespace Platform::Simulated
