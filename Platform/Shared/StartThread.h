#pragma once

#include <functional>
#include <string_view>
#include <thread>

namespace Platform::Shared {

/// A new thread that does the work. Raises winrt::hresult_error where the system has none left; `whose`, for its text.
/// Any thread.
std::thread startThread(std::string_view whose, std::function<void()> work);

} // namespace Platform::Shared
