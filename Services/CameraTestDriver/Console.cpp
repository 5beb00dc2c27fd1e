#include "Services/CameraTestDriver/Console.h"

#include "Framework/CXX/Common/TextConversion.h"

template <typename Value> void Console::prompted(std::string_view prompt, Value& value) {
    writeText(prompt);
    _input >> value;
}

void Console::ask(std::string_view prompt, std::int32_t& value) { prompted(prompt, value); }

void Console::ask(std::string_view prompt, bool& value) { prompted(prompt, value); }

void Console::ask(std::string_view prompt, std::u16string& value) {
    std::string word;
    prompted(prompt, word);
    value = Halden::toUtf16(word);
}

void Console::append(std::string& text, std::u16string_view part) { text += Halden::toUtf8(part); }

void Console::writeText(std::string_view text) { _output << text << std::flush; }
