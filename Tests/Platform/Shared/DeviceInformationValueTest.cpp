#include "Platform/Shared/DeviceInformationValue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <thread>

using namespace Platform;
using namespace Platform::Shared;

namespace {

PropertyValue text(const char16_t* value) { return std::u16string(value); }

TEST(DeviceInformationValueTest, AnUpdateReplacesAndAddsProperties) {
    DeviceInformationValue device({u"id", u"name", DeviceInformationKind::DeviceInterface, std::nullopt,
                                   PropertyMap{{u"a", text(u"1")}, {u"b", text(u"2")}}});
    device.Update(
        std::make_shared<DeviceInformationUpdateValue>(u"id", PropertyMap{{u"b", text(u"3")}, {u"c", text(u"4")}}));
    const PropertyMap properties = device.Properties();
    EXPECT_EQ(properties.Size(), 3U);
    EXPECT_EQ(unboxString(properties.Lookup(u"a")), u"1");
    EXPECT_EQ(unboxString(properties.Lookup(u"b")), u"3");
    EXPECT_EQ(unboxString(properties.Lookup(u"c")), u"4");
    EXPECT_EQ(device.Id(), u"id");
    EXPECT_EQ(device.Name(), u"name");
}

TEST(DeviceInformationValueTest, UpdatesMayRunBesideReaders) {
    DeviceInformationValue device({u"id", u"", DeviceInformationKind::Device, std::nullopt, {}});
    const auto update = std::make_shared<DeviceInformationUpdateValue>(u"id", PropertyMap{{u"a", text(u"1")}});
    std::thread writer([&] {
        for (int i = 0; i < 1000; ++i)
            device.Update(update);
    });
    std::uint32_t most = 0;
    for (int i = 0; i < 1000; ++i)
        most = std::max(most, device.Properties().Size());
    writer.join();
    EXPECT_LE(most, 1U);
    EXPECT_EQ(device.Properties().Size(), 1U);
}

} // namespace
