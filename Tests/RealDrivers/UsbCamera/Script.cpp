#include "Tests/RealDrivers/UsbCamera/Script.h"

#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace UsbCamera {

void Script::command(const std::string& line) {
    std::istringstream words(line);
    std::string verb;
    std::string name;
    std::string last;
    words >> verb >> name >> last;
    if (verb == "at" && !last.empty()) {
        _event = name;
        _command = last;
    } else {
        obey(verb, name, last.empty() ? 0 : static_cast<unsigned>(std::stoul(last)));
    }
    std::printf("command %s\n", line.c_str());
}

void Script::obey(const std::string& verb, const std::string& name, unsigned code) {
    if (verb == "refuse" && code != 0)
        _refusals[name] = static_cast<std::uint8_t>(code);
    else if (verb == "accept")
        _refusals.erase(name);
    else if (verb == "mute" || verb == "speak")
        _mute = verb == "mute";
    else if (verb == "freeze" || verb == "thaw")
        _frozen = verb == "freeze";
    else if (verb == "cut" || verb == "mark")
        _damage = verb == "cut" ? Damage::Cut : Damage::Mark;
    else if (verb == "stall")
        _stalled = true;
    else if (verb == "count")
        happened("made", _made);
    else if (verb == "unplug")
        _unplugged = true;
    else if (verb == "plug")
        _unplugged = false;
    else if (verb == "end")
        _ended = true;
    else
        throw std::invalid_argument("no command: " + verb);
}

void Script::happened(const std::string& event) {
    std::printf("%s\n", event.c_str());
    passed(event);
}

void Script::happened(const std::string& event, std::uint32_t value) {
    std::printf("%s %u\n", event.c_str(), value);
    if (event == "set-exposure")
        _frames = 0;
    passed(event);
}

void Script::passed(const std::string& event) {
    if (event != _event)
        return;
    _event.clear();
    obey(_command, "", 0);
}

std::uint8_t Script::refusalOf(const std::string& control) const {
    const auto found = _refusals.find(control);
    return found != _refusals.end() ? found->second : std::uint8_t{0};
}

void Script::plugged() {
    _mute = _frozen = _stalled = false;
    _damage = Damage::None;
    happened("plugged");
}

} // namespace UsbCamera
