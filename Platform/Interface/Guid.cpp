#include "Platform/Interface/Guid.h"

#include <endian.h>
#include <uuid.h>

#include <bit>

namespace Platform {

namespace {

using Bytes = std::array<unsigned char, sizeof(uuid_t)>; // in the order of the text, as the library has them

// Between the processor's order of the bytes of a field and the text's; the way there is the way back.
Guid reordered(Guid guid) {
    guid.Data1 = htobe32(guid.Data1);
    guid.Data2 = htobe16(guid.Data2);
    guid.Data3 = htobe16(guid.Data3);
    return guid;
}

} // namespace

std::string guidToText(const Guid& guid) {
    std::array<char, UUID_STR_LEN> text{};
    uuid_unparse_lower(std::bit_cast<Bytes>(reordered(guid)).data(), text.data());
    return std::string("{") + text.data() + "}";
}

std::optional<Guid> guidFromText(std::string_view text) {
    if (!text.starts_with('{') || !text.ends_with('}'))
        return std::nullopt;
    Bytes bytes{};
    if (uuid_parse_range(text.data() + 1, text.data() + text.size() - 1, bytes.data()) != 0)
        return std::nullopt;
    return reordered(std::bit_cast<Guid>(bytes));
}

namespace GuidHelper {

Guid CreateNewGuid() {
    Bytes bytes{};
    uuid_generate_random(bytes.data());
    return reordered(std::bit_cast<Guid>(bytes));
}

} // namespace GuidHelper
} // namespace Platform
