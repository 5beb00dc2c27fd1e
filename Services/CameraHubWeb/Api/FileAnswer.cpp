#include "Services/CameraHubWeb/Api/FileAnswer.h"

#include "Services/CameraHubWeb/Http/Problem.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <optional>
#include <string_view>

namespace CameraHubWeb {
namespace {

std::string_view trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Whether a list of tags, as in If-None-Match, has it; weak ones count.
bool listHasTag(std::string_view list, std::string_view quotedTag) {
    if (trimmed(list) == "*")
        return true;
    while (!list.empty()) {
        const auto comma = std::min(list.find(','), list.size());
        std::string_view tag = trimmed(list.substr(0, comma));
        if (tag.starts_with("W/"))
            tag.remove_prefix(2);
        if (tag == quotedTag)
            return true;
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
    return false;
}

struct Range {
    std::size_t offset = 0;
    std::size_t length = 0; // 0: not in the file
};

/// None where the text is no such number; one that is too large for the type counts as the largest.
std::optional<std::size_t> readPosition(std::string_view text) {
    std::size_t position = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, position);
    if (read.ptr != end || text.empty())
        return std::nullopt;
    return read.ec == std::errc() ? position : std::size_t(-1);
}

/// "bytes=0-499", "bytes=500-", "bytes=-500"; none where it is no single range, and all is to be sent.
std::optional<Range> readRange(std::string_view text, std::size_t size) {
    constexpr std::string_view unit = "bytes=";
    if (!text.starts_with(unit))
        return std::nullopt;
    text = trimmed(text.substr(unit.size()));
    const auto dash = text.find('-');
    if (dash == std::string_view::npos || text.find(',') != std::string_view::npos)
        return std::nullopt;
    const std::string_view firstText = text.substr(0, dash);
    const auto first = readPosition(firstText);
    const auto last = readPosition(text.substr(dash + 1));
    if (firstText.empty()) // so many at the end
        return last ? std::optional(Range{size - std::min(*last, size), std::min(*last, size)}) : std::nullopt;
    if (!first || (!last && dash + 1 != text.size()) || (last && *last < *first))
        return std::nullopt;
    if (*first >= size)
        return Range{};
    return Range{*first, std::min(last.value_or(size - 1), size - 1) - *first + 1};
}

/// What may stand in a header's value in quotation marks.
std::string plain(const std::string& fileName) {
    std::string text;
    for (const char c : fileName)
        text += c >= ' ' && c < 0x7F && c != '"' && c != '\\' && c != '%' ? c : '-';
    return text;
}

/// As RFC 8187 has it.
std::string percentEncoded(const std::string& fileName) {
    std::string text;
    for (const char c : fileName) {
        const bool isPlain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.' ||
                             c == '-' || c == '_';
        std::array<char, 4> escape{};
        (void)std::snprintf(escape.data(), escape.size(), "%%%02X", static_cast<unsigned char>(c));
        text += isPlain ? std::string(1, c) : escape.data();
    }
    return text;
}

Problem noSuchRange() {
    Problem problem;
    problem.kind = "range-not-satisfiable";
    problem.status = 416;
    problem.title = "No such part";
    problem.detail = "The picture has no such bytes.";
    problem.advice = "Ask for bytes within its length, or for all of it.";
    return problem;
}

} // namespace

std::string contentDisposition(const std::string& kind, const std::string& fileName) {
    const std::string safe = plain(fileName);
    std::string value = kind;
    value.append("; filename=\"").append(safe).append("\"");
    if (safe != fileName)
        value.append("; filename*=UTF-8''").append(percentEncoded(fileName));
    return value;
}

HttpResponse answerWithFile(const HttpRequest& request, const FileAnswer& file) {
    const std::string tag = "\"" + file.tag + "\"";
    HttpResponse response;
    response.headers = {{"ETag", tag}, {"Cache-Control", file.cacheControl}, {"Accept-Ranges", "bytes"}};
    const std::string* const noneMatch = request.header("if-none-match");
    if (noneMatch && listHasTag(*noneMatch, tag)) {
        response.status = 304;
        return response;
    }
    const std::size_t size = file.bytes->size();
    response.body = file.bytes;
    response.length = size;
    response.headers.emplace_back("Content-Type", file.contentType);
    if (!file.saveAs.empty())
        response.headers.emplace_back("Content-Disposition", contentDisposition("attachment", file.saveAs));

    const std::string* const rangeText = request.header("range");
    const std::string* const ifRange = request.header("if-range");
    if (!rangeText || request.method != "GET" || (ifRange && *ifRange != tag))
        return response;
    const std::optional<Range> range = readRange(*rangeText, size);
    if (!range)
        return response;
    if (range->length == 0) {
        HttpResponse none = problemResponse(noSuchRange());
        none.headers.emplace_back("Content-Range", "bytes */" + std::to_string(size));
        return none;
    }
    response.status = 206;
    response.offset = range->offset;
    response.length = range->length;
    response.headers.emplace_back("Content-Range", "bytes " + std::to_string(range->offset) + "-" +
                                                       std::to_string(range->offset + range->length - 1) + "/" +
                                                       std::to_string(size));
    return response;
}

} // namespace CameraHubWeb
