#pragma once

#include <cstdlib>
#include <optional>
#include <string>

/// Sets an environment variable, or removes it if given no value; puts the old state back at the end.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const std::optional<std::string>& value) : _name(name) {
        if (const char* const old = std::getenv(name))
            _old = old;
        set(value);
    }
    ~ScopedEnvironment() { set(_old); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    void set(const std::optional<std::string>& value) const {
        if (value)
            setenv(_name.c_str(), value->c_str(), 1);
        else
            unsetenv(_name.c_str());
    }

    const std::string _name;
    std::optional<std::string> _old;
};
