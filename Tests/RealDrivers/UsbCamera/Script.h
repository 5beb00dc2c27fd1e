#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace UsbCamera {

/// What every other frame suffers.
enum class Damage { None, Cut, Mark };

/// What the tests have asked the camera to do wrong, and the record of what happened to it: one line an event on
/// the standard output, "name value".
class Script {
public:
    /// One line: "refuse NAME CODE" (a UVC error code), "accept NAME", "mute" and "speak" (control requests),
    /// "freeze" and "thaw" (frames), "cut" and "mark" (every other frame from now on: half of it is missing, or it
    /// bears the error bit), "stall" (the endpoint of the frames), "count" (tells "made N"), "unplug", "plug", "end",
    /// and "at EVENT COMMAND". Throws std::invalid_argument.
    void command(const std::string& line);

    /// Writes the event down; the one that "at" has named runs its command.
    void happened(const std::string& event);
    void happened(const std::string& event, std::uint32_t value);

    /// The same for what happens too often to be written down.
    void passed(const std::string& event);

    /// The camera's latest frame, whether anybody takes it or not, has that number.
    void frameMade(std::uint32_t number) { _made = number; }

    /// A frame has gone out: the event "frame-N", which counts from the latest change of the exposure.
    void framePassed() { passed("frame-" + std::to_string(++_frames)); }

    /// The code with which that control is to be refused; 0: it is not.
    std::uint8_t refusalOf(const std::string& control) const;

    bool isMute() const { return _mute; }
    bool isFrozen() const { return _frozen; }
    Damage damage() const { return _damage; }
    bool isStalled() const { return _stalled; }
    /// The kernel has cleared the endpoint.
    void stallEnded() { _stalled = false; }
    bool isUnplugged() const { return _unplugged; }
    bool hasEnded() const { return _ended; }

    /// As the camera is plugged in again: nothing but refusals stays.
    void plugged();

private:
    void obey(const std::string& verb, const std::string& name, unsigned code);

    std::map<std::string, std::uint8_t> _refusals;
    std::string _event;   // that which runs the command
    std::string _command; // without an argument
    std::uint32_t _made = 0;
    unsigned _frames = 0; // since the exposure was changed
    bool _mute = false;
    bool _frozen = false;
    Damage _damage = Damage::None;
    bool _stalled = false;
    bool _unplugged = false;
    bool _ended = false;
};

} // namespace UsbCamera
