#pragma once

#include <utility>

namespace Platform::Shared {

/// Owns a file descriptor of the system; -1 is none. One thread at a time.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : _descriptor(descriptor) {}
    ~FileDescriptor();
    FileDescriptor(FileDescriptor&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(_descriptor, other._descriptor);
        return *this;
    }

    int get() const { return _descriptor; }
    bool isOpen() const { return _descriptor >= 0; }

private:
    int _descriptor = -1;
};

} // namespace Platform::Shared
