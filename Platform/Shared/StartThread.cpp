#include "Platform/Shared/StartThread.h"

#include "Platform/Shared/ErrnoError.h"

#include <system_error>
#include <utility>

namespace Platform::Shared {

std::thread startThread(std::string_view whose, std::function<void()> work) try {
    return std::thread(std::move(work));
} catch (const std::system_error& error) {
    throw errnoError("pthread_create", whose, error.code().value());
}

} // namespace Platform::Shared
