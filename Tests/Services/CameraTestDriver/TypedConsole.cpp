#include "Tests/Services/CameraTestDriver/TypedConsole.h"

TypedConsole::TypedConsole(const std::string& typed, std::size_t limit)
    : _input(typed), _buffer(limit), _output(&_buffer), _console(_input, _output) {
    _output.exceptions(std::ios::badbit); // so that ConsoleFull passes through the stream
}

TypedConsole::Buffer::int_type TypedConsole::Buffer::overflow(int_type byte) {
    if (_text.size() == _limit)
        throw ConsoleFull();
    _text += traits_type::to_char_type(byte);
    return byte;
}

int TypedConsole::Buffer::sync() {
    ++_flushes;
    return 0;
}
