#pragma once

#include "Framework/CXX/System/RegistryValue.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace Halden::System {

/// The values of one key. Names are found without regard to case; the key's default value has the name "".
class RegistryKey {
public:
    /// Null if there is none. Valid for the key's life.
    const RegistryValue* find(std::string_view name) const;

    /// Copies the value to the beginning of `data` if it exists, has this type and not more than `size` bytes; what
    /// lies behind a shorter one stays. Otherwise all of `data` stays as it was, and the result is false.
    bool read(std::string_view name, RegistryType type, void* data, std::size_t size) const;

    void set(std::string_view name, RegistryValue value);
    void remove(std::string_view name);

private:
    std::map<std::string, RegistryValue, std::less<>> _values; // by the name in small letters
};

/// The keys of a text in the registry's export format. Reading never fails: what can't be understood is passed
/// over, later lines override earlier ones.
class RegistryFile {
public:
    /// Where the hub's settings are: $CAMERA_HUB_REGISTRY, else the file in /etc.
    static std::string defaultPath();

    /// No keys if the file is missing, not a regular file, or longer than 16 MiB; what can't be read of it is missing.
    static RegistryFile load(const std::string& path);

    static RegistryFile parse(std::string_view bytes);

    /// By its full path, for instance `HKEY_LOCAL_MACHINE\SYSTEM`, without regard to case; null if there is none.
    std::shared_ptr<const RegistryKey> openKey(std::string_view path) const;

private:
    /// The key that a line like [KEY] opens; null for a broken one, and for [-KEY], which deletes.
    std::shared_ptr<RegistryKey> enterSection(std::string_view line);
    void deleteKey(const std::string& path);

    std::map<std::string, std::shared_ptr<RegistryKey>, std::less<>> _keys; // by the path in small letters
};

} // namespace Halden::System
