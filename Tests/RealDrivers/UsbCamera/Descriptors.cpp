#include "Tests/RealDrivers/UsbCamera/Descriptors.h"

#include <array>
#include <cstddef>
#include <string>

// The numbers are those of the USB 2.0 standard, chapter 9, and of the USB Video Class 1.1.
namespace UsbCamera {
namespace {

constexpr std::uint8_t deviceType = 1;
constexpr std::uint8_t configurationType = 2;
constexpr std::uint8_t stringType = 3;
constexpr std::uint8_t interfaceType = 4;
constexpr std::uint8_t endpointType = 5;
constexpr std::uint8_t associationType = 11;
constexpr std::uint8_t classInterfaceType = 0x24;

constexpr std::uint8_t videoClass = 14;
constexpr std::uint8_t controlSubclass = 1;
constexpr std::uint8_t streamingSubclass = 2;
constexpr std::uint8_t collectionSubclass = 3;

// Of the numbers that are free for tests.
constexpr std::uint16_t vendor = 0x1209;
constexpr std::uint16_t product = 0x0001;

enum StringIndex : std::uint8_t { NoString = 0, MakerString = 1, ProductString = 2, SerialString = 3 };

/// A descriptor with its length in front.
Bytes withLength(Bytes body) {
    body.insert(body.begin(), static_cast<std::uint8_t>(body.size() + 1));
    return body;
}

/// The string's number, for a device that has it.
std::uint8_t numberOf(const std::string& text, std::uint8_t number) {
    return text.empty() ? std::uint8_t{NoString} : number;
}

Bytes deviceDescriptor(const CameraModel& model) {
    Bytes d{deviceType};
    append(d, 0x0200, 2);             // USB 2.0
    append(d, Bytes{0xEF, 2, 1, 64}); // class: by association; packets of 64 at endpoint 0
    append(d, vendor, 2);
    append(d, product, 2);
    append(d, 0x0100, 2);
    append(d, Bytes{numberOf(model.maker, MakerString), numberOf(model.product, ProductString),
                    numberOf(model.serial, SerialString), 1});
    return withLength(d);
}

Bytes stringDescriptor(const std::string& ascii) {
    Bytes d{stringType};
    for (const char c : ascii)
        append(d, static_cast<std::uint8_t>(c), 2);
    return withLength(d);
}

Bytes interfaceDescriptor(std::uint8_t number, std::uint8_t endpoints, std::uint8_t subclass) {
    return withLength({interfaceType, number, 0, endpoints, videoClass, subclass, 0, ProductString});
}

/// A class descriptor that tells the length of all that belong together, itself included.
Bytes withHeader(const Bytes& before, const Bytes& behind, const Bytes& others) {
    const std::size_t ownSize = 1 + before.size() + 2 + behind.size();
    Bytes d = before;
    append(d, ownSize + others.size(), 2);
    append(d, behind);
    d = withLength(d);
    append(d, others);
    return d;
}

Bytes controlDescriptors() {
    // Auto exposure mode, exposure time, focus, auto focus.
    constexpr std::uint32_t cameraControls = 1 << 1 | 1 << 3 | 1 << 5 | 1 << 17;
    // Brightness, contrast, white balance temperature and its automatic.
    constexpr std::uint32_t processingControls = 1 << 0 | 1 << 1 | 1 << 6 | 1 << 12;

    Bytes camera{classInterfaceType, 2, Number::cameraTerminal};
    append(camera, 0x0201, 2);
    append(camera, Bytes{0, 0, 0, 0, 0, 0, 0, 0, 3});
    append(camera, cameraControls, 3);

    Bytes processing{classInterfaceType, 5, Number::processingUnit, Number::cameraTerminal, 0, 0, 2};
    append(processing, processingControls, 2);
    append(processing, Bytes{0, 0});

    Bytes output{classInterfaceType, 3, Number::outputTerminal};
    append(output, 0x0101, 2);
    append(output, Bytes{0, Number::processingUnit, 0});

    Bytes units = withLength(camera);
    append(units, withLength(processing));
    append(units, withLength(output));

    Bytes behind;
    append(behind, 48'000'000, 4); // Hz, of a clock that nobody asks for
    append(behind, Bytes{1, Number::streamingInterface});
    return withHeader({classInterfaceType, 1, 0x10, 0x01}, behind, units);
}

Bytes formatDescriptor(Format format, std::uint8_t index, std::uint8_t frames) {
    if (format == Format::Mjpeg)
        return withLength({classInterfaceType, 6, index, frames, 1, 1, 0, 0, 0, 0});
    Bytes d{classInterfaceType, 4, index, frames, 'Y', 'U', 'Y', '2'};
    append(d, Bytes{0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}); // the GUID's common part
    append(d, Bytes{16, 1, 0, 0, 0, 0});
    return withLength(d);
}

Bytes frameDescriptor(const CameraModel& model, Format format, std::uint8_t index, const Size& size) {
    const std::uint32_t bytes = size.width * size.height * 2;
    Bytes d{classInterfaceType, static_cast<std::uint8_t>(format == Format::Mjpeg ? 7 : 5), index, 0};
    append(d, size.width, 2);
    append(d, size.height, 2);
    append(d, std::uint64_t{bytes} * 8 * model.rate, 4);
    append(d, std::uint64_t{bytes} * 8 * model.rate, 4);
    append(d, bytes, 4);
    append(d, model.interval(), 4);
    append(d, 1, 1); // one interval
    append(d, model.interval(), 4);
    return withLength(d);
}

Bytes streamingDescriptors(const CameraModel& model) {
    Bytes formats;
    for (std::size_t f = 0; f < model.formats.size(); ++f) {
        append(formats, formatDescriptor(model.formats[f], static_cast<std::uint8_t>(f + 1),
                                         static_cast<std::uint8_t>(model.sizes.size())));
        for (std::size_t s = 0; s < model.sizes.size(); ++s)
            append(formats, frameDescriptor(model, model.formats[f], static_cast<std::uint8_t>(s + 1), model.sizes[s]));
        append(formats, withLength({classInterfaceType, 13, 1, 1, 4})); // BT.709 primaries and curve, BT.601 matrix
    }
    const auto count = static_cast<std::uint8_t>(model.formats.size());
    Bytes behind{0x80 | Number::frameEndpoint, 0, Number::outputTerminal, 0, 0, 0, 1};
    behind.resize(behind.size() + count); // no controls of a format
    return withHeader({classInterfaceType, 1, count}, behind, formats);
}

Bytes configurationDescriptor(const CameraModel& model) {
    Bytes all = withLength({associationType, 0, 2, videoClass, collectionSubclass, 0, ProductString});
    append(all, interfaceDescriptor(Number::controlInterface, 0, controlSubclass));
    append(all, controlDescriptors());
    append(all, interfaceDescriptor(Number::streamingInterface, 1, streamingSubclass));
    append(all, streamingDescriptors(model));
    append(all, withLength({endpointType, 0x80 | Number::frameEndpoint, 2, 0x00, 0x02, 0})); // bulk, packets of 512

    Bytes d{configurationType};
    append(d, 9 + all.size(), 2);
    append(d, Bytes{2, 1, 0, 0x80, 250}); // two interfaces; fed by the bus, 500 mA
    d = withLength(d);
    append(d, all);
    return d;
}

} // namespace

Bytes descriptor(const CameraModel& model, std::uint8_t type, std::uint8_t index) {
    if (type == deviceType)
        return deviceDescriptor(model);
    if (type == configurationType && index == 0)
        return configurationDescriptor(model);
    if (type != stringType)
        return {};
    switch (index) {
    case NoString:
        return withLength({stringType, 0x09, 0x04}); // English
    case MakerString:
        return stringDescriptor(model.maker);
    case ProductString:
        return stringDescriptor(model.product);
    case SerialString:
        return stringDescriptor(model.serial);
    default:
        return {};
    }
}

} // namespace UsbCamera
