#include "Tools/Text/CameraChoice.h"

#include "Tools/Text/TerminalText.h"

#include <algorithm>
#include <charconv>

namespace CommandLine {
namespace {

using CameraHub::Camera;
using Numbers = std::vector<std::size_t>;

/// Of the list, from 0.
Numbers all(const std::vector<Camera>& cameras) {
    Numbers numbers(cameras.size());
    for (std::size_t number = 0; number < numbers.size(); ++number)
        numbers[number] = number;
    return numbers;
}

std::string listed(const std::vector<Camera>& cameras, const Numbers& numbers) {
    std::string text;
    for (const std::size_t number : numbers)
        text += (text.empty() ? "" : ", ") + std::to_string(number + 1) + " " + printable(cameraName(cameras[number])) +
                " (" + printable(cameras[number].uid) + ")";
    return text;
}

std::string inSmallLetters(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    return text;
}

Numbers named(const std::vector<Camera>& cameras, const std::string& part) {
    Numbers numbers = all(cameras);
    std::erase_if(numbers, [&](std::size_t number) {
        return inSmallLetters(cameraName(cameras[number])).find(inSmallLetters(part)) == std::string::npos;
    });
    return numbers;
}

/// 0 where the text is no number.
std::size_t numberIn(const std::string& text) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

} // namespace

std::string cameraName(const Camera& camera) {
    if (camera.make.empty() && camera.model.empty())
        return camera.uid;
    return camera.make + (camera.make.empty() || camera.model.empty() ? "" : " ") + camera.model;
}

const Camera& chooseCamera(const std::vector<Camera>& cameras, const std::string& wanted) {
    if (cameras.empty())
        throw NoSuchCamera("the hub has no camera; plug one in and see it come with: camera-hub list --watch");
    if (wanted.empty())
        return cameras.front();
    const auto sameUid = std::ranges::find(cameras, wanted, &Camera::uid);
    if (sameUid != cameras.end())
        return *sameUid;
    const std::size_t number = numberIn(wanted);
    if (number >= 1 && number <= cameras.size())
        return cameras[number - 1];
    const Numbers fitting = named(cameras, wanted);
    if (fitting.size() > 1)
        throw NoSuchCamera("\"" + printable(wanted) +
                           "\" fits several cameras, give one by its number or uid: " + listed(cameras, fitting));
    if (fitting.empty())
        throw NoSuchCamera("no camera is called \"" + printable(wanted) +
                           "\", there are: " + listed(cameras, all(cameras)));
    return cameras[fitting.front()];
}

} // namespace CommandLine
