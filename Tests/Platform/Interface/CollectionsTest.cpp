#include "Platform/Interface/Collections.h"

#include "Platform/Interface/PropertyValue.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Platform;

namespace {

TEST(VectorViewTest, RaisesAtAndPastItsEnd) {
    const VectorView<int> list{1, 2};
    EXPECT_EQ(list.Size(), 2U);
    EXPECT_EQ(list.GetAt(1), 2);
    EXPECT_THROW(list.GetAt(2), winrt::hresult_out_of_bounds);
    EXPECT_THROW(list.GetAt(static_cast<std::uint32_t>(-1)), winrt::hresult_out_of_bounds);
    EXPECT_THROW(VectorView<int>().GetAt(0), winrt::hresult_out_of_bounds);
}

TEST(VectorViewTest, IteratesInOrder) {
    const VectorView<int> list{3, 1, 2};
    EXPECT_EQ(std::vector<int>(list.begin(), list.end()), (std::vector{3, 1, 2}));
}

TEST(MapViewTest, IteratesInTheOrderInWhichItWasFilled) {
    const MapView<int> map{{u"b", 1}, {u"a", 2}};
    std::u16string keys;
    for (const auto& entry : map)
        keys += entry.first;
    EXPECT_EQ(keys, u"ba");
}

TEST(MapViewTest, RaisesForAKeyThatItLacks) {
    const MapView<int> map{{u"a", 2}};
    EXPECT_TRUE(map.HasKey(u"a"));
    EXPECT_EQ(map.Lookup(u"a"), 2);
    EXPECT_FALSE(map.HasKey(u"A"));
    EXPECT_THROW(map.Lookup(u"A"), winrt::hresult_out_of_bounds);
}

TEST(PropertyValueTest, UnboxesItsOwnTypeAlone) {
    const Guid guid{1, 2, 3, {}};
    EXPECT_EQ(unboxString(PropertyValue(std::u16string(u"text"))), u"text");
    EXPECT_EQ(unboxGuid(PropertyValue(guid)), guid);
    EXPECT_THROW(unboxString(PropertyValue(guid)), winrt::hresult_error);
    EXPECT_THROW(unboxGuid(PropertyValue(std::u16string(u"text"))), winrt::hresult_error);
}

} // namespace
