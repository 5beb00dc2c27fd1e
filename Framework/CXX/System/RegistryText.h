#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Halden::System {

/// The lines of an exported file as UTF-8, without line ends. The bytes are UTF-16 in either byte order if they
/// begin with its mark, else UTF-8 with or without one. A line that is no well-formed UTF-16 becomes empty.
std::vector<std::string> registryLines(std::string_view bytes);

/// Without blanks and tabs at both ends.
std::string_view trimmed(std::string_view text);

/// Takes a quoted text off the beginning, and undoes its backslashes. Nothing, with `text` unchanged, if no
/// such text stands there.
std::optional<std::string> takeQuoted(std::string_view& text);

/// ASCII letters become small. Names are compared in this form.
std::string lowered(std::string_view text);

} // namespace Halden::System
