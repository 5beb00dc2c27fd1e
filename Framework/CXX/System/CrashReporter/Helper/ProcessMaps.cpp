#include "Framework/CXX/System/CrashReporter/Helper/ProcessMaps.h"

#include <fstream>
#include <sstream>

namespace Halden::System {

namespace {

/// "begin-end permissions offset device inode    name"
ProcessMapping parseMapping(const std::string& line) {
    std::istringstream words(line);
    ProcessMapping mapping;
    char dash = 0;
    std::string permissions;
    std::string device;
    words >> std::hex >> mapping.begin >> dash >> mapping.end >> permissions >> mapping.fileOffset >> device >>
        std::dec >> mapping.inode >> std::ws;
    std::getline(words, mapping.name);
    mapping.readable = permissions.find('r') != std::string::npos;
    mapping.writable = permissions.find('w') != std::string::npos;
    mapping.executable = permissions.find('x') != std::string::npos;
    mapping.shared = permissions.find('s') != std::string::npos;
    return mapping;
}

} // namespace

std::vector<ProcessMapping> readMaps(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/smaps");
    std::vector<ProcessMapping> maps;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string first;
        words >> first;
        if (first.empty() || first.back() != ':') {
            maps.push_back(parseMapping(line));
        } else if (first == "Anonymous:" && !maps.empty()) {
            std::uint64_t kilobytes = 0;
            words >> kilobytes;
            maps.back().changed = kilobytes != 0;
        }
    }
    return maps;
}

} // namespace Halden::System
