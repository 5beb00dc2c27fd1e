#include "Framework/CXX/System/CrashReporter/MemoryMap.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>

namespace Halden::System {

namespace {

/// Takes the next word off the line; words are separated by one of the separators, or several blanks.
std::string_view takeWord(std::string_view& line, char separator) noexcept {
    const std::size_t end = line.find(separator);
    const std::string_view word = line.substr(0, end);
    line.remove_prefix(end == std::string_view::npos ? line.size() : end + 1);
    return word;
}

std::uint64_t hexValue(std::string_view digits) noexcept {
    std::uint64_t value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    return value;
}

/// "begin-end permissions offset device inode    name"
Mapping parseLine(std::string_view line) noexcept {
    Mapping mapping{};
    mapping.begin = hexValue(takeWord(line, '-'));
    mapping.end = hexValue(takeWord(line, ' '));
    mapping.executable = takeWord(line, ' ').find('x') != std::string_view::npos;
    mapping.fileOffset = hexValue(takeWord(line, ' '));
    takeWord(line, ' '); // device
    takeWord(line, ' '); // inode
    const std::size_t name = line.find_first_not_of(' ');
    mapping.name = name == std::string_view::npos ? std::string_view() : line.substr(name);
    return mapping;
}

} // namespace

void MemoryMap::readOwn() noexcept {
    _size = 0;
    const int file = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    if (file >= 0) {
        ssize_t count = 0;
        do {
            count = read(file, _text.data() + _size, _text.size() - _size);
            _size += count > 0 ? static_cast<std::size_t>(count) : 0;
        } while (count > 0 || (count < 0 && errno == EINTR));
        close(file);
    }
    parse();
}

const Mapping* MemoryMap::find(std::uint64_t address) const noexcept {
    for (std::size_t i = 0; i < _count; ++i)
        if (address >= _mappings[i].begin && address < _mappings[i].end)
            return &_mappings[i];
    return nullptr;
}

void MemoryMap::parse() noexcept {
    _count = 0;
    std::string_view rest = text();
    while (!rest.empty() && _count < _mappings.size())
        _mappings[_count++] = parseLine(takeWord(rest, '\n'));
}

} // namespace Halden::System
