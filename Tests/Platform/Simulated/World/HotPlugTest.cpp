#include "Platform/Shared/EventQueue.h"
#include "Tests/Platform/Simulated/SimulatedFixture.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <mutex>
#include <set>
#include <string>
#include <vector>

using namespace Platform;
using std::chrono::milliseconds;

namespace {

std::string groupText(const std::string& id, const std::string& more = {}) {
    return R"({"id": ")" + id + R"(", "sources": [{"id": "S", "device": {"id": "D)" + id +
           R"("}, "profiles": [{"width": 8, "height": 8}]}])" + more + "}";
}

std::string groupsText(const std::vector<std::string>& groups) {
    std::string list;
    for (const std::string& group : groups)
        list += (list.empty() ? "" : ", ") + group;
    return R"({"journal": "journal.txt", "groups": [)" + list + "]}";
}

std::size_t threadsOfThisProcess() {
    const std::filesystem::directory_iterator threads("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(threads), end(threads)));
}

class HotPlugTest : public SimulatedFixture {
protected:
    /// Notes events as "+id", "*id" and "-id".
    void watch() {
        const auto note = [this](char kind, const std::u16string& id) {
            std::lock_guard lock(_mutex);
            _events.push_back(kind + std::string(id.begin(), id.end()));
            return winrt::result::ok;
        };
        _watcher = platform->CreateWatcher(platform->GetDeviceSelector());
        _watcher->Added([note](const auto&, const DeviceInformation& device) { return note('+', device->Id()); });
        _watcher->Updated([this, note](const auto&, const DeviceInformationUpdate& update) {
            {
                std::lock_guard lock(_mutex);
                _update = update;
            }
            return note('*', update->Id());
        });
        _watcher->Removed(
            [note](const auto&, const DeviceInformationUpdate& update) { return note('-', update->Id()); });
        _watcher->Start();
    }
    std::vector<std::string> events() {
        std::lock_guard lock(_mutex);
        return _events;
    }
    bool waitForEvents(std::vector<std::string> expected) {
        std::sort(expected.begin(), expected.end());
        return waitUntil([&] {
            auto seen = events();
            std::sort(seen.begin(), seen.end()); // devices are independent of each other
            return seen == expected;
        });
    }

    /// Writes the scenario in place, with a pause in the middle; how long that took.
    std::chrono::steady_clock::duration writeInTwoHalves(const std::string& text) const {
        const auto begin = std::chrono::steady_clock::now();
        std::ofstream writer(file.path(), std::ios::trunc);
        writer << text.substr(0, 20) << std::flush;
        std::this_thread::sleep_for(milliseconds(20));
        writer << text.substr(20) << std::flush;
        return std::chrono::steady_clock::now() - begin;
    }

    DeviceWatcher _watcher;
    std::mutex _mutex;
    std::vector<std::string> _events;
    DeviceInformationUpdate _update;
};

TEST_F(HotPlugTest, DevicesThatArePresentAreAdded) {
    start(groupsText({groupText("A"), groupText("B")}));
    watch();
    EXPECT_TRUE(waitForEvents({"+A", "+B"}));
}

TEST_F(HotPlugTest, FiftyThousandGroupsAreAddedByABoundedNumberOfThreads) {
    constexpr int count = 50'000;
    std::string list;
    for (int i = 0; i < count; ++i)
        list += (i == 0 ? R"({"id": "G)" : R"(, {"id": "G)") + std::to_string(i) + R"("})";
    start(R"({"groups": [)" + list + "]}");
    std::mutex mutex;
    std::set<std::u16string> added;
    std::size_t running = 0;
    std::size_t mostRunning = 0;
    std::size_t mostThreads = 0;
    std::promise<std::size_t> completed;
    const DeviceWatcher watcher = platform->CreateWatcher(platform->GetDeviceSelector());
    watcher->Added([&](const auto&, const DeviceInformation& device) {
        {
            std::lock_guard lock(mutex);
            mostRunning = std::max(mostRunning, ++running);
        }
        EXPECT_EQ(blockingWait(platform->FromIdAsync(device->Id()))->Id(), device->Id());
        std::lock_guard lock(mutex);
        --running;
        added.insert(device->Id());
        if (added.size() % 500 == 0)
            mostThreads = std::max(mostThreads, threadsOfThisProcess());
        return winrt::result::ok;
    });
    watcher->EnumerationCompleted([&](const auto&) {
        std::lock_guard lock(mutex);
        completed.set_value(added.size());
        return winrt::result::ok;
    });
    watcher->Start();
    EXPECT_EQ(completed.get_future().get(), std::size_t{count});
    EXPECT_LE(mostRunning, Shared::EventQueue::limit);
    // Two for each event, and those that have told one what it waited for and are about to come free: no fixed number,
    // as it is the system that lets them run on.
    EXPECT_LE(mostThreads, 4 * Shared::EventQueue::limit);
}

TEST_F(HotPlugTest, ANewGroupIsAddedAndAGoneOneRemoved) {
    start(groupsText({groupText("A")}));
    watch();
    ASSERT_TRUE(waitForEvents({"+A"}));
    file.replace(groupsText({groupText("A"), groupText("B")}));
    EXPECT_TRUE(waitForEvents({"+A", "+B"}));
    file.replace(groupsText({groupText("B")}));
    EXPECT_TRUE(waitForEvents({"+A", "+B", "-A"}));
}

TEST_F(HotPlugTest, AGroupWhoseObjectDiffersIsUpdated) {
    start(groupsText({groupText("A"), groupText("B")}));
    watch();
    ASSERT_TRUE(waitForEvents({"+A", "+B"}));
    file.replace(groupsText({groupText("A"), groupText("B", R"(, "displayName": "new")")}));
    EXPECT_TRUE(waitForEvents({"+A", "+B", "*B"}));
}

TEST_F(HotPlugTest, AnotherOrderOfMembersIsNoUpdate) {
    start(groupsText({R"({"id": "A", "displayName": "n"})"}));
    watch();
    ASSERT_TRUE(waitForEvents({"+A"}));
    file.replace(groupsText({R"({ "displayName":"n",  "id": "A" })", groupText("B")}));
    EXPECT_TRUE(waitForEvents({"+A", "+B"}));
}

TEST_F(HotPlugTest, TheWatchedDeviceIsReported) {
    const auto watched = [](const std::string& properties) {
        return R"(, "watched": {"id": "W", "properties": {)" + properties + "}}";
    };
    start(groupsText({groupText("A", watched(R"("same": "1", "old": "1")"))}));
    watch();
    ASSERT_TRUE(waitForEvents({"+W"}));
    file.replace(groupsText({groupText("A", watched(R"("same": "1", "old": "2", "new": "3")"))}));
    ASSERT_TRUE(waitForEvents({"+W", "*W"}));
    std::lock_guard lock(_mutex);
    const PropertyMap news = _update->Properties();
    EXPECT_EQ(news.Size(), 2U);
    EXPECT_EQ(unboxString(news.Lookup(u"old")), u"2");
    EXPECT_EQ(unboxString(news.Lookup(u"new")), u"3");
}

TEST_F(HotPlugTest, AnotherWatchedDeviceIsANewOne) {
    start(groupsText({groupText("A", R"(, "watched": {"id": "W"})")}));
    watch();
    ASSERT_TRUE(waitForEvents({"+W"}));
    file.replace(groupsText({groupText("A", R"(, "watched": {"id": "X"})")}));
    EXPECT_TRUE(waitForEvents({"+W", "-W", "+X"}));
}

TEST_F(HotPlugTest, AnUnpluggedCameraComesBackInOrder) {
    start(groupsText({groupText("A")}));
    watch();
    for (const auto& [present, count] : {std::pair{false, 2U}, {true, 3U}, {false, 4U}, {true, 5U}}) {
        file.replace(groupsText(present ? std::vector{groupText("A")} : std::vector<std::string>()));
        const std::size_t expected = count;
        ASSERT_TRUE(waitUntil([&] { return events().size() == expected; }));
    }
    EXPECT_EQ(events(), (std::vector<std::string>{"+A", "-A", "+A", "-A", "+A"}));
}

TEST_F(HotPlugTest, TheJournalTellsOfEventsBeforeTheHandlersRun) {
    start(groupsText({groupText("A")}));
    _watcher = platform->CreateWatcher(platform->GetDeviceSelector());
    std::atomic<bool> stood = false;
    std::atomic<bool> ran = false;
    _watcher->Added([&](const auto&, const auto&) {
        const auto lines = journal.linesOf("DeviceWatcher.Added");
        stood = lines.size() == 1 && lines[0].device == "A";
        ran = true;
        return winrt::result::ok;
    });
    _watcher->Start();
    ASSERT_TRUE(waitUntil([&] { return ran.load(); }));
    EXPECT_TRUE(stood);
    file.replace(groupsText({groupText("A", R"(, "displayName": "new")")}));
    ASSERT_TRUE(journal.waitForCall("DeviceWatcher.Updated"));
    file.replace(groupsText({}));
    ASSERT_TRUE(journal.waitForCall("DeviceWatcher.Removed"));
    EXPECT_EQ(journal.linesOf("DeviceWatcher.Updated")[0].device, "A");
    EXPECT_EQ(journal.linesOf("DeviceWatcher.Removed")[0].device, "A");
}

TEST_F(HotPlugTest, TheFileMayBeWrittenInPlace) {
    start(groupsText({groupText("A")}));
    file.write(groupsText({groupText("A"), groupText("B")}));
    EXPECT_TRUE(waitUntil([&] { return groupCount() == 2; }));
}

TEST_F(HotPlugTest, TheFileMayStayOpenInItsWriter) {
    start(groupsText({groupText("A")}));
    std::ofstream writer(file.path(), std::ios::trunc);
    writer << groupsText({groupText("A"), groupText("B")}) << std::flush;
    EXPECT_TRUE(waitUntil([&] { return groupCount() == 2; }));
}

TEST_F(HotPlugTest, TheFileMayBeMovedAwayAndComeBack) {
    start(groupsText({groupText("A")}));
    std::filesystem::rename(file.path(), file.folder() / "backup");
    file.write(groupsText({groupText("A"), groupText("B")}));
    EXPECT_TRUE(waitUntil([&] { return groupCount() == 2; }));
    std::filesystem::remove(file.path());
    file.replace(groupsText({}));
    EXPECT_TRUE(waitUntil([&] { return groupCount() == 0; }));
}

TEST_F(HotPlugTest, ManyChangesInARowEndWithTheLastOne) {
    start(groupsText({}));
    for (int i = 0; i < 50; ++i) {
        const std::string text = groupsText({groupText("A"), groupText(std::to_string(i))});
        if (i % 2 == 0)
            file.write(text);
        else
            file.replace(text);
    }
    EXPECT_TRUE(waitUntil([&] {
        const auto groups = blockingWait(platform->FindAllAsync());
        return groups.Size() == 2 && groups.GetAt(1)->Id() == u"49";
    }));
}

TEST_F(HotPlugTest, AFileThatDoesNotParseIsIgnoredWithOneLineUntilItDoes) {
    start(groupsText({groupText("A")}));
    testing::internal::CaptureStderr();
    file.write("{\"groups\": [");
    // While it is captured, standard error is a file.
    EXPECT_TRUE(waitUntil([] {
        std::ifstream errors("/proc/self/fd/2");
        return std::string(std::istreambuf_iterator<char>(errors), {}).find('\n') != std::string::npos;
    }));
    std::this_thread::sleep_for(milliseconds(400)); // for another line
    EXPECT_EQ(groupCount(), 1U);
    std::fflush(stderr);
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    EXPECT_NE(text.find(file.path().native() + ": is no JSON"), std::string::npos) << text;
    file.write(groupsText({groupText("A"), groupText("B")}));
    EXPECT_TRUE(waitUntil([&] { return groupCount() == 2; }));
}

TEST_F(HotPlugTest, AFileThatIsWrittenInTwoHalvesIsNotComplainedOf) {
    // The writer has a tenth of a second. One whom a busy machine keeps from writing for longer tries again.
    bool isInTime = false;
    for (int attempt = 0; attempt < 100 && !isInTime; ++attempt) {
        start(groupsText({groupText("A")}));
        testing::internal::CaptureStderr();
        isInTime = writeInTwoHalves(groupsText({groupText("A"), groupText("B")})) < milliseconds(100);
        EXPECT_TRUE(waitUntil([&] { return groupCount() == 2; }));
        const std::string complaints = testing::internal::GetCapturedStderr();
        EXPECT_TRUE(complaints.empty() || !isInTime) << complaints;
    }
    EXPECT_TRUE(isInTime);
}

TEST_F(HotPlugTest, ACameraIsThereAsLongAsASourceOfAnyGroupHasItsDevice) {
    start(cameraScenario());
    const MediaCapture capture = open();
    file.replace(R"({"groups": [{"id": "other", "sources": [{"id": "S", "device": {"id": "D"}}]}]})");
    ASSERT_TRUE(waitUntil([&] { return group()->Id() == u"other"; }));
    EXPECT_FALSE(outcomeOf([&] { capture->VideoDeviceController(); }).raised);
}

TEST_F(HotPlugTest, ThePlatformMayBeReleasedInItsOwnHandler) {
    start(groupsText({groupText("A")}));
    std::atomic<bool> released = false;
    {
        const auto watcher = platform->CreateWatcher(platform->GetDeviceSelector());
        watcher->Added([&](const auto&, const auto&) {
            platform.reset();
            _watcher.reset();
            released = true;
            return winrt::result::ok;
        });
        _watcher = watcher;
        _watcher->Start();
        EXPECT_TRUE(waitUntil([&] { return released.load(); }));
    }
}

TEST_F(HotPlugTest, AHandlerThatRunsWhenThePlatformEndsGoesOn) {
    start(groupsText({groupText("A")}));
    std::atomic<bool> running = false;
    std::atomic<bool> opened = false;
    _watcher = platform->CreateWatcher(platform->GetDeviceSelector());
    const MediaFrameSourceGroup first = group();
    const MediaCapture capture = platform->CreateMediaCapture();
    _watcher->Added([&](const auto&, const auto&) {
        running = true;
        std::this_thread::sleep_for(milliseconds(50));
        blockingWait(capture->InitializeAsync({first, {}, {}}));
        opened = true;
        return winrt::result::ok;
    });
    _watcher->Start();
    ASSERT_TRUE(waitUntil([&] { return running.load(); }));
    platform.reset(); // waits for the handler
    EXPECT_TRUE(opened);
}

} // namespace
