#include "Tests/Platform/Interface/PlatformContract.h"
#include "Tests/Support/WaitUntil.h"

#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace Platform;

namespace {

constexpr auto moment = std::chrono::milliseconds(50);

/// What the handlers of one watcher were told, in order. They own it together with the test.
class Record {
public:
    void add(const std::u16string& news) {
        std::lock_guard lock(_mutex);
        _news.push_back(news);
    }
    std::vector<std::u16string> news() const {
        std::lock_guard lock(_mutex);
        return _news;
    }
    bool waitFor(std::size_t count) const {
        return waitUntil([&] { return news().size() >= count; });
    }

private:
    mutable std::mutex _mutex;
    std::vector<std::u16string> _news;
};

using News = std::vector<std::u16string>;
using Recorded = std::shared_ptr<Record>;

DeviceWatcher createWatcher(CameraPlatform& platform) { return platform.CreateWatcher(platform.GetDeviceSelector()); }

/// What writes an event of that name down.
auto writing(const Recorded& record, const std::u16string& name) {
    return [record, name](const auto&...) {
        record->add(name);
        return winrt::result::ok;
    };
}

/// A watcher that has reported what is there, and writes down what it reports.
DeviceWatcher startedWatcher(CameraPlatform& platform, const Recorded& record) {
    const DeviceWatcher watcher = createWatcher(platform);
    watcher->Added([record](const auto&, const DeviceInformation& device) {
        record->add(u"added " + device->Id());
        return winrt::result::ok;
    });
    watcher->Removed([record](const auto&, const DeviceInformationUpdate& device) {
        record->add(u"removed " + device->Id());
        return winrt::result::ok;
    });
    watcher->EnumerationCompleted(writing(record, u"completed"));
    watcher->Start();
    EXPECT_TRUE(record->waitFor(2));
    return watcher;
}

/// The id in "added ID".
std::u16string idIn(const std::u16string& added) { return added.substr(std::u16string(u"added ").size()); }

} // namespace

TEST_P(PlatformContract, AnotherSelectorCannotBeWatched) {
    EXPECT_EQ(codeRaisedBy([&] { _platform->CreateWatcher(u"something else"); }), winrt::result::invalidArgument);
}

TEST_P(PlatformContract, TheCameraIsReportedByTheIdThatFindsItsGroup) {
    const auto record = std::make_shared<Record>();
    const DeviceWatcher watcher = startedWatcher(*_platform, record);
    const std::u16string id = idIn(record->news().at(0));
    EXPECT_EQ(blockingWait(_platform->FromIdAsync(id))->Id(), _settings.SourceGroup->Id());
}

TEST_P(PlatformContract, NothingIsReportedBeforeTheStart) {
    const auto record = std::make_shared<Record>();
    const DeviceWatcher watcher = createWatcher(*_platform);
    watcher->Added(writing(record, u"added"));
    std::this_thread::sleep_for(moment);
    EXPECT_EQ(record->news(), News());
}

TEST_P(PlatformContract, TheEnumerationCompletesOnceAfterTheHandlersOfWhatIsThere) {
    const auto record = std::make_shared<Record>();
    const DeviceWatcher watcher = createWatcher(*_platform);
    watcher->Added([record](const auto&, const auto&) {
        std::this_thread::sleep_for(moment);
        return record->add(u"added"), winrt::result::ok;
    });
    watcher->EnumerationCompleted(writing(record, u"completed"));
    watcher->Start();
    ASSERT_TRUE(record->waitFor(2));
    std::this_thread::sleep_for(moment);
    EXPECT_EQ(record->news(), (News{u"added", u"completed"}));
}

TEST_P(PlatformContract, AWatcherStartsOnce) {
    const auto record = std::make_shared<Record>();
    const DeviceWatcher watcher = startedWatcher(*_platform, record);
    EXPECT_EQ(codeRaisedBy([&] { watcher->Start(); }), winrt::result::illegalMethodCall);
}

TEST_P(PlatformContract, TheHandlerThatIsSetLastCounts) {
    const auto record = std::make_shared<Record>();
    const DeviceWatcher watcher = createWatcher(*_platform);
    watcher->EnumerationCompleted(writing(record, u"first"));
    watcher->EnumerationCompleted(writing(record, u"last"));
    watcher->Start();
    ASSERT_TRUE(record->waitFor(1));
    EXPECT_EQ(record->news(), News{u"last"});
}

TEST_P(PlatformContract, ACameraThatGoesAndComesBackIsReportedUnderItsId) {
    const auto record = std::make_shared<Record>();
    const DeviceWatcher watcher = startedWatcher(*_platform, record);
    const std::u16string added = record->news().at(0);
    if (!_subject->unplug())
        GTEST_SKIP() << "This camera cannot be unplugged.";
    ASSERT_TRUE(record->waitFor(3));
    _subject->plugIn();
    ASSERT_TRUE(record->waitFor(4));
    EXPECT_EQ(record->news(), (News{added, u"completed", u"removed " + idIn(added), added}));
}

TEST_P(PlatformContract, EventsOfOneDeviceAreHandledInOrderAndOneAtATime) {
    const auto record = std::make_shared<Record>();
    const DeviceWatcher watcher = createWatcher(*_platform);
    watcher->Added([record](const auto&, const auto&) {
        record->add(u"added begins");
        std::this_thread::sleep_for(4 * moment);
        return record->add(u"added ends"), winrt::result::ok;
    });
    watcher->Removed(writing(record, u"removed"));
    watcher->Start();
    ASSERT_TRUE(record->waitFor(1));
    if (!_subject->unplug())
        GTEST_SKIP() << "This camera cannot be unplugged.";
    ASSERT_TRUE(record->waitFor(3));
    EXPECT_EQ(record->news(), (News{u"added begins", u"added ends", u"removed"}));
}

TEST_P(PlatformContract, AReleasedWatcherReportsNothing) {
    const auto record = std::make_shared<Record>();
    startedWatcher(*_platform, record).reset();
    const News before = record->news();
    if (!_subject->unplug())
        GTEST_SKIP() << "This camera cannot be unplugged.";
    std::this_thread::sleep_for(moment);
    EXPECT_EQ(record->news(), before);
}

TEST_P(PlatformContract, AWatcherMayBeReleasedByItsOwnHandler) {
    const auto last = std::make_shared<DeviceWatcher>(createWatcher(*_platform));
    const std::weak_ptr<IDeviceWatcher> watcher = *last;
    std::promise<void> handed;
    (*last)->Added([last, mayGo = handed.get_future().share()](const auto&, const auto&) {
        mayGo.wait();
        last->reset();
        return winrt::result::ok;
    });
    DeviceWatcher starter = *last;
    starter->Start();
    starter.reset();
    handed.set_value();
    EXPECT_TRUE(waitUntil([&] { return watcher.expired(); }));
}
