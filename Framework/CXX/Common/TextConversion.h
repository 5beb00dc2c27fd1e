#pragma once

#include <string>
#include <string_view>

namespace Halden {

/// UTF-16 to UTF-8. Text that is not well-formed (a surrogate without its partner) becomes empty.
std::string toUtf8(std::u16string_view text);

/// UTF-16 to UTF-8 where a damaged text tells more than none: a surrogate without its partner becomes U+FFFD.
std::string toUtf8WithReplacements(std::u16string_view text);

/// UTF-8 to UTF-16. Text that is not well-formed (overlong forms, surrogates, broken sequences)
/// becomes empty.
std::u16string toUtf16(std::string_view text);

} // namespace Halden
