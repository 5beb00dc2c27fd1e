#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace CameraHubWeb {

/// A file that is part of the program. What it refers to lives as long as the program.
struct PageFile {
    /// Without a folder: "index.html".
    std::string_view name;
    /// A media type, with its charset where it has one.
    std::string_view contentType;
    /// A strong entity tag with its quotes, of the content alone.
    std::string_view etag;
    std::span<const std::uint8_t> content;
};

/// All files of the page, by name; and "openapi.yaml" where the interface is described. Any thread.
std::span<const PageFile> pageFiles();

/// Null where there is no such file. Any thread.
const PageFile* findPageFile(std::string_view name);

} // namespace CameraHubWeb
