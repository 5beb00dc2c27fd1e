#include "Framework/CXX/System/RegistryFile.h"

#include "Framework/CXX/Common/RegularFile.h"
#include "Framework/CXX/System/EnvironmentVariable.h"
#include "Framework/CXX/System/RegistryText.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace Halden::System {

namespace {

constexpr std::size_t longestFile = 16UL * 1024 * 1024; // bytes; an export of all settings has a few hundred

// The name in front of "=", taken off the line together with it; "@" is the default value's.
std::optional<std::string> takeName(std::string_view& line) {
    std::string_view rest = line;
    std::optional<std::string> name;
    if (rest.starts_with('@')) {
        name.emplace();
        rest.remove_prefix(1);
    } else {
        name = takeQuoted(rest);
    }
    rest = trimmed(rest);
    if (!name || !rest.starts_with('='))
        return std::nullopt;
    line = trimmed(rest.substr(1));
    return name;
}

// Bytes may go on in the next line, behind a backslash.
bool isContinued(std::string_view line) {
    std::string_view value = line;
    return line.ends_with('\\') && takeName(value) && lowered(value.substr(0, 3)) == "hex";
}

std::vector<std::string> joinContinuedLines(const std::vector<std::string>& lines) {
    std::vector<std::string> joined;
    bool continued = false;
    for (const std::string& line : lines) {
        const std::string_view text = trimmed(line);
        if (continued && !text.starts_with('[')) {
            joined.back().pop_back();
            joined.back() += text;
            continued = joined.back().ends_with('\\');
        } else {
            joined.emplace_back(text);
            continued = isContinued(text);
        }
    }
    return joined;
}

void readValueLine(RegistryKey& key, std::string_view line) {
    const std::optional<std::string> name = takeName(line);
    if (!name)
        return;
    if (line == "-")
        key.remove(*name);
    else if (std::optional<RegistryValue> value = parseRegistryValue(line))
        key.set(*name, std::move(*value));
}

} // namespace

const RegistryValue* RegistryKey::find(std::string_view name) const {
    const auto found = _values.find(lowered(name));
    return found == _values.end() ? nullptr : &found->second;
}

bool RegistryKey::read(std::string_view name, RegistryType type, void* data, std::size_t size) const {
    const RegistryValue* const value = find(name);
    if (value == nullptr || value->type != type || value->data.size() > size)
        return false;
    std::ranges::copy(value->data, static_cast<std::uint8_t*>(data));
    return true;
}

void RegistryKey::set(std::string_view name, RegistryValue value) { _values[lowered(name)] = std::move(value); }

void RegistryKey::remove(std::string_view name) { _values.erase(lowered(name)); }

std::string RegistryFile::defaultPath() {
    return environmentVariableOr("CAMERA_HUB_REGISTRY", "/etc/larkspur-windows-camera-hub/registry.reg");
}

RegistryFile RegistryFile::load(const std::string& path) {
    return parse(readRegularFile(path, longestFile).bytes); // as far as it can be read
}

RegistryFile RegistryFile::parse(std::string_view bytes) {
    RegistryFile file;
    std::shared_ptr<RegistryKey> current;
    for (const std::string& line : joinContinuedLines(registryLines(bytes)))
        if (line.starts_with('['))
            current = file.enterSection(line);
        else if (current)
            readValueLine(*current, line);
    return file;
}

std::shared_ptr<const RegistryKey> RegistryFile::openKey(std::string_view path) const {
    const auto found = _keys.find(lowered(path));
    return found == _keys.end() ? nullptr : found->second;
}

std::shared_ptr<RegistryKey> RegistryFile::enterSection(std::string_view line) {
    const std::size_t end = line.rfind(']');
    if (end == std::string_view::npos)
        return nullptr;
    const std::string path = lowered(line.substr(1, end - 1));
    if (path.starts_with('-')) {
        deleteKey(path.substr(1));
        return nullptr;
    }
    return _keys.try_emplace(path, std::make_shared<RegistryKey>()).first->second;
}

void RegistryFile::deleteKey(const std::string& path) {
    constexpr char behindSeparator = '\\' + 1;
    _keys.erase(path);
    _keys.erase(_keys.lower_bound(path + '\\'), _keys.lower_bound(path + behindSeparator));
}

} // namespace Halden::System
