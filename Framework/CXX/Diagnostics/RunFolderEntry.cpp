#include "Framework/CXX/Diagnostics/RunFolderEntry.h"

#include "Framework/CXX/Common/TextConversion.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <limits>

namespace {

// As much as leading digits tell; none tell 0, too many the largest number.
int leadingNumber(std::u16string_view text) {
    constexpr std::int64_t largest = std::numeric_limits<int>::max();
    std::int64_t number = 0;
    for (const char16_t digit : text) {
        if (digit < u'0' || digit > u'9')
            break;
        number = std::min(number * 10 + (digit - u'0'), largest);
    }
    return static_cast<int>(number);
}

std::string_view::size_type behind(std::string_view::size_type position) { return position + 1; }

} // namespace

RunFolderEntry RunFolderEntry::ofStartTime(std::int64_t secondsSinceEpoch) {
    const std::time_t time = secondsSinceEpoch;
    std::tm local{};
    localtime_r(&time, &local);
    std::array<char, 80> text{}; // six numbers of 32 bits at their longest
    std::snprintf(text.data(), text.size(), "%04u-%02u-%02u_%02u-%02u-%02u",
                  static_cast<unsigned>(local.tm_year + 1900), static_cast<unsigned>(local.tm_mon + 1),
                  static_cast<unsigned>(local.tm_mday), static_cast<unsigned>(local.tm_hour),
                  static_cast<unsigned>(local.tm_min), static_cast<unsigned>(local.tm_sec));
    return {0, secondsSinceEpoch, Halden::toUtf16(text.data()), true};
}

RunFolderEntry RunFolderEntry::ofName(const std::u16string& name) {
    const std::int64_t time = looksLikeRunFolder(name) ? timeOfRunFolderName(name) : 0;
    return {0, time, name, time > 0};
}

bool looksLikeRunFolder(std::u16string_view name) {
    constexpr std::size_t shortest = 11;
    constexpr std::size_t longest = 19;
    return name.find(u'-') != std::u16string_view::npos && name.size() >= shortest && name.size() <= longest;
}

std::int64_t timeOfRunFolderName(std::u16string_view name) {
    constexpr std::size_t none = std::u16string_view::npos;
    constexpr std::int64_t latest = 32535215999; // the end of the year 3000; no run is later
    const std::size_t yearEnd = name.find(u'-');
    if (yearEnd == none)
        return 0;
    const std::size_t monthEnd = name.find(u'-', behind(yearEnd));
    if (monthEnd == none)
        return 0;
    const std::size_t dayEnd = name.find(u'_', behind(monthEnd));
    if (dayEnd == none)
        return 0;
    const std::size_t hourEnd = name.find(u'-', behind(dayEnd));
    if (hourEnd == none)
        return 0;
    std::tm local{};
    local.tm_year = leadingNumber(name.substr(0, 4)) - 1900;
    local.tm_mon = leadingNumber(name.substr(behind(yearEnd))) - 1;
    local.tm_mday = leadingNumber(name.substr(behind(monthEnd)));
    local.tm_hour = leadingNumber(name.substr(behind(dayEnd)));
    local.tm_min = leadingNumber(name.substr(behind(hourEnd)));
    const std::size_t minuteEnd = name.find(u'-', behind(hourEnd));
    if (minuteEnd != none)
        local.tm_sec = leadingNumber(name.substr(behind(minuteEnd)));
    local.tm_isdst = -1; // unknown
    const std::int64_t time = std::mktime(&local);
    return time <= latest ? time : 0;
}
