#include "Services/CameraHubWeb/Stills/StillStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

namespace CameraHubWeb {
namespace {

using testing::ElementsAre;

std::shared_ptr<const KeptStill> still(std::string id, std::size_t bytes = 10) {
    auto made = std::make_shared<KeptStill>();
    made->id = std::move(id);
    made->png = std::make_shared<const std::vector<std::uint8_t>>(bytes);
    return made;
}

std::vector<std::string> idsIn(const StillStore& store) {
    std::vector<std::string> ids;
    for (const auto& kept : store.all())
        ids.push_back(kept->id);
    return ids;
}

TEST(StillStoreTest, TheLatestComesFirst) {
    StillStore store(3, 1000);
    EXPECT_THAT(idsIn(store), ElementsAre());
    for (const char* id : {"a", "b", "c"})
        store.add(still(id));
    EXPECT_THAT(idsIn(store), ElementsAre("c", "b", "a"));
}

TEST(StillStoreTest, TheOldestGoesFirst) {
    StillStore store(2, 1000);
    for (const char* id : {"a", "b", "c"})
        store.add(still(id));
    EXPECT_THAT(idsIn(store), ElementsAre("c", "b"));
    EXPECT_EQ(store.find("a"), nullptr);
    EXPECT_EQ(store.find("b")->id, "b");
}

TEST(StillStoreTest, AsManyGoAsALargeOneNeedsRoom) {
    StillStore store(10, 100);
    for (const char* id : {"a", "b", "c"})
        store.add(still(id, 30));
    EXPECT_EQ(store.bytes(), 90);
    store.add(still("large", 70));
    EXPECT_THAT(idsIn(store), ElementsAre("large", "c"));
    EXPECT_EQ(store.bytes(), 100);
}

TEST(StillStoreTest, TheLatestStaysHoweverLargeItIs) {
    StillStore store(10, 100);
    store.add(still("small", 10));
    store.add(still("large", 500));
    EXPECT_THAT(idsIn(store), ElementsAre("large"));
    EXPECT_EQ(store.bytes(), 500);
    StillStore none(0, 0);
    none.add(still("only"));
    EXPECT_THAT(idsIn(none), ElementsAre("only"));
}

TEST(StillStoreTest, WhoeverHasAStillKeepsItWhole) {
    StillStore store(1, 1000);
    store.add(still("a", 123));
    const auto held = store.find("a");
    store.add(still("b"));
    EXPECT_EQ(store.find("a"), nullptr);
    EXPECT_EQ(held->png->size(), 123);
}

TEST(StillStoreTest, ManyThreadsMayUseIt) {
    StillStore store(4, 1000);
    std::atomic<int> broken = 0;
    const auto work = [&](const std::string& id) {
        for (int count = 0; count < 200; ++count) {
            store.add(still(id));
            const auto found = store.find(id);
            broken += found && found->id != id;
            broken += store.all().size() > 4 || store.bytes() > 40;
        }
    };
    std::vector<std::thread> threads;
    for (const char* id : {"a", "b", "c"})
        threads.emplace_back(work, id);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(broken, 0);
    EXPECT_EQ(store.all().size(), 4);
}

TEST(StillStoreTest, AnIdIs32HexadecimalDigitsAndNoneComesTwice) {
    std::set<std::string> ids;
    for (int count = 0; count < 1000; ++count)
        ids.insert(newStillId());
    EXPECT_EQ(ids.size(), 1000);
    for (const std::string& id : ids) {
        EXPECT_EQ(id.size(), 32);
        EXPECT_EQ(id.find_first_not_of("0123456789abcdef"), std::string::npos) << id;
    }
}

} // namespace
} // namespace CameraHubWeb
