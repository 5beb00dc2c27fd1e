#pragma once

#include <concepts>
#include <cstdint>
#include <istream>
#include <ostream>
#include <string>
#include <string_view>

/// The person's side of the test driver: two streams of UTF-8. Narrow text is written as it is, wide text
/// (UTF-16) is converted; both go to the one output, in the order in which they are written. One thread at a time.
class Console {
public:
    /// Both streams have to outlive the console.
    Console(std::istream& input, std::ostream& output) : _input(input), _output(output) {}
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// Writes texts and numbers one behind the other, doubles as "%f" prints them.
    template <typename... Parts> void write(const Parts&... parts) {
        std::string text;
        (append(text, parts), ...);
        writeText(text);
    }

    template <typename... Parts> void writeLine(const Parts&... parts) { write(parts..., "\n"); }

    /// Prompts, then reads a number. A failed read fails all later ones, which leave `value` as it is.
    void ask(std::string_view prompt, std::int32_t& value);

    /// The same for 0 or 1.
    void ask(std::string_view prompt, bool& value);

    /// The same for a word without blanks, which becomes empty if it is not well-formed.
    void ask(std::string_view prompt, std::u16string& value);

private:
    template <typename Value> void prompted(std::string_view prompt, Value& value);

    static void append(std::string& text, std::string_view part) { text += part; }
    static void append(std::string& text, std::u16string_view part);
    static void append(std::string& text, double part) { text += std::to_string(part); }
    static void append(std::string& text, std::integral auto part) { text += std::to_string(part); }

    void writeText(std::string_view text);

    std::istream& _input;
    std::ostream& _output;
};
