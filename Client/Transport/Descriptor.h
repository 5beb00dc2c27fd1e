#pragma once

namespace CameraHub {

/// Owns a file descriptor and closes it; below 0 it owns none.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : _descriptor(descriptor) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;

    int get() const { return _descriptor; }

private:
    int _descriptor;
};

} // namespace CameraHub
