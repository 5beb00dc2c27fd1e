#include "Tools/Text/TerminalText.h"

#include <glib.h>

namespace CommandLine {
namespace {

int widthOf(gunichar character) {
    if (g_unichar_iszerowidth(character))
        return 0;
    return g_unichar_iswide(character) ? 2 : 1;
}

} // namespace

std::string printable(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const gunichar character = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        const bool isWhole = character < 0x110000; // otherwise one of the marks of what is no character
        if (isWhole && !g_unichar_iscntrl(character) && character != 0) {
            const auto size = static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr));
            result += text.substr(0, size);
            text.remove_prefix(size);
        } else {
            result += "\ufffd";
            text.remove_prefix(isWhole && character != 0 ? g_unichar_to_utf8(character, nullptr) : 1);
        }
    }
    return result;
}

int displayWidth(std::string_view text) {
    int width = 0;
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at < end; at = g_utf8_next_char(at))
        width += widthOf(g_utf8_get_char(at));
    return width;
}

std::string shortened(std::string_view text, int columns) {
    if (displayWidth(text) <= columns)
        return std::string(text);
    int width = 1; // of the ellipsis
    const char* at = text.data();
    while (width + widthOf(g_utf8_get_char(at)) <= columns) {
        width += widthOf(g_utf8_get_char(at));
        at = g_utf8_next_char(at);
    }
    return std::string(text.substr(0, static_cast<std::size_t>(at - text.data()))) + "\u2026";
}

} // namespace CommandLine
