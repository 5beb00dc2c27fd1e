#pragma once

#include "Platform/Interface/RandomAccessStream.h"
#include "Platform/Shared/FileDescriptor.h"

#include <string>
#include <utility>

namespace Platform::Shared {

/// A file on disk as a stream. Raises what the system reports as winrt::hresult_error.
class FileStream final : public IRandomAccessStream {
public:
    /// `path`, UTF-8, is for the texts of errors.
    FileStream(FileDescriptor file, std::string path) : _file(std::move(file)), _path(std::move(path)) {}

    std::uint64_t Size() const override;
    void Seek(std::uint64_t position) override { _position = position; }
    std::size_t Read(std::span<std::uint8_t> bytes) override;
    void Write(std::span<const std::uint8_t> bytes) override;

private:
    const FileDescriptor _file;
    const std::string _path;
    std::uint64_t _position = 0;
};

} // namespace Platform::Shared
