#include "Platform/Shared/DeviceWatcherBase.h"

#include "Platform/Shared/DeviceInformationValue.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <latch>
#include <memory>
#include <string>
#include <thread>

using namespace Platform;
using namespace Platform::Shared;

namespace {

DeviceInformation device(const std::u16string& id) {
    return std::make_shared<DeviceInformationValue>(
        DeviceDescription{id, u"", DeviceInformationKind::DeviceInterface, std::nullopt, {}});
}

DeviceInformationUpdate update(const std::u16string& id) {
    return std::make_shared<DeviceInformationUpdateValue>(id, PropertyMap());
}

class FakeWatcher final : public DeviceWatcherBase {
public:
    FakeWatcher() : DeviceWatcherBase(std::make_shared<WorkerPool>()) {}

    std::function<void(FakeWatcher&)> onStart = [](FakeWatcher&) {};

    using DeviceWatcherBase::reportAdded;
    using DeviceWatcherBase::reportEnumerationCompleted;
    using DeviceWatcherBase::reportRemoved;
    using DeviceWatcherBase::reportUpdated;

protected:
    void startWatching() override { onStart(*this); }
};

TEST(DeviceWatcherBaseTest, EventsOfOneDeviceComeInOrderOneAtATime) {
    const auto watcher = std::make_shared<FakeWatcher>();
    std::string order; // unguarded: one at a time
    std::promise<void> last;
    watcher->Added([&](const auto&, const auto&) { return order += 'a', winrt::result::ok; });
    watcher->Updated([&](const auto&, const auto&) { return order += 'u', winrt::result::ok; });
    watcher->Removed([&](const auto&, const auto&) {
        order += 'r';
        if (order.size() == 30)
            last.set_value();
        return winrt::result::ok;
    });
    watcher->Start();
    for (int i = 0; i < 10; ++i) {
        watcher->reportAdded(device(u"d"));
        watcher->reportUpdated(update(u"d"));
        watcher->reportRemoved(update(u"d"));
    }
    ASSERT_EQ(last.get_future().wait_for(patience), std::future_status::ready);
    EXPECT_EQ(order, "auraurauraurauraurauraurauraur");
}

TEST(DeviceWatcherBaseTest, EventsOfDifferentDevicesRunAtTheSameTime) {
    const auto watcher = std::make_shared<FakeWatcher>();
    std::latch all(10);
    std::atomic<int> ended = 0;
    std::promise<void> last;
    watcher->Added([&](const auto&, const auto&) {
        all.arrive_and_wait();
        if (++ended == 10)
            last.set_value();
        return winrt::result::ok;
    });
    watcher->Start();
    for (char16_t i = 0; i < 10; ++i)
        watcher->reportAdded(device(std::u16string(1, static_cast<char16_t>(u'0' + i))));
    EXPECT_EQ(last.get_future().wait_for(patience), std::future_status::ready);
}

TEST(DeviceWatcherBaseTest, ManyDevicesAtOnceDoNotRunAllTheirEventsAtOnce) {
    constexpr int devices = 2000;
    const auto watcher = std::make_shared<FakeWatcher>();
    std::promise<void> reported;
    const auto allAreReported = reported.get_future().share();
    std::atomic<int> running = 0;
    std::atomic<int> tooMany = 0;
    std::latch all(devices);
    watcher->Added([&, allAreReported](const auto&, const auto&) {
        if (++running > static_cast<int>(EventQueue::limit))
            ++tooMany;
        allAreReported.wait();
        --running;
        all.count_down();
        return winrt::result::ok;
    });
    watcher->Start();
    for (int i = 0; i < devices; ++i)
        watcher->reportAdded(device(std::u16string(1, static_cast<char16_t>(u'A' + i))));
    reported.set_value();
    all.wait();
    EXPECT_EQ(tooMany, 0);
}

TEST(DeviceWatcherBaseTest, EnumerationCompletesAfterTheFirstDevicesHaveBeenHandled) {
    const auto watcher = std::make_shared<FakeWatcher>();
    std::atomic<int> handled = 0;
    std::promise<int> completed;
    watcher->Added([&](const auto&, const auto&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        ++handled;
        return winrt::result::ok;
    });
    watcher->EnumerationCompleted([&](const auto&) {
        completed.set_value(handled); // a second time would throw
        return winrt::result::ok;
    });
    watcher->onStart = [](FakeWatcher& self) {
        self.reportAdded(device(u"1"));
        self.reportAdded(device(u"2"));
        self.reportEnumerationCompleted();
    };
    watcher->Start();
    auto result = completed.get_future();
    ASSERT_EQ(result.wait_for(patience), std::future_status::ready);
    EXPECT_EQ(result.get(), 2);
}

TEST(DeviceWatcherBaseTest, EnumerationCompletesWithoutAnyDevice) {
    const auto watcher = std::make_shared<FakeWatcher>();
    std::promise<void> completed;
    watcher->EnumerationCompleted([&](const auto&) { return completed.set_value(), winrt::result::ok; });
    watcher->onStart = [](FakeWatcher& self) { self.reportEnumerationCompleted(); };
    watcher->Start();
    EXPECT_EQ(completed.get_future().wait_for(patience), std::future_status::ready);
}

TEST(DeviceWatcherBaseTest, AFailingHandlerDoesNotEndTheEvents) {
    const auto watcher = std::make_shared<FakeWatcher>();
    std::atomic<int> calls = 0;
    std::promise<void> second;
    watcher->Added([&](const auto&, const auto&) {
        if (++calls == 2)
            second.set_value();
        return winrt::result::fail;
    });
    watcher->Start();
    watcher->reportAdded(device(u"d"));
    watcher->reportAdded(device(u"d"));
    EXPECT_EQ(second.get_future().wait_for(patience), std::future_status::ready);
}

TEST(DeviceWatcherBaseTest, StartsOnce) {
    const auto watcher = std::make_shared<FakeWatcher>();
    watcher->Start();
    EXPECT_THROW(watcher->Start(), winrt::hresult_error);
}

TEST(DeviceWatcherBaseTest, MayBeStartedAgainAfterAStartThatFailed) {
    const auto watcher = std::make_shared<FakeWatcher>();
    int starts = 0;
    watcher->onStart = [&](FakeWatcher&) {
        if (++starts == 1)
            throw winrt::hresult_error(winrt::result::fail, u"no");
    };
    EXPECT_THROW(watcher->Start(), winrt::hresult_error);
    watcher->Start();
    EXPECT_EQ(starts, 2);
}

TEST(DeviceWatcherBaseTest, ItsOwnHandlerMayReleaseIt) {
    for (int i = 0; i < 50; ++i) {
        auto watcher = std::make_shared<FakeWatcher>();
        const std::weak_ptr<FakeWatcher> weak = watcher;
        std::promise<void> handled;
        watcher->Added([&](const auto&, const auto&) {
            watcher.reset();
            handled.set_value();
            return winrt::result::ok;
        });
        FakeWatcher& raw = *watcher;
        raw.Start();
        raw.reportAdded(device(u"d"));
        ASSERT_EQ(handled.get_future().wait_for(patience), std::future_status::ready);
        EXPECT_TRUE(waitUntil([&] { return weak.expired(); }));
    }
}

TEST(DeviceWatcherBaseTest, ReleasedInTheMiddleOfAHandlerDeliversNothingMore) {
    auto watcher = std::make_shared<FakeWatcher>();
    const std::weak_ptr<FakeWatcher> weak = watcher;
    std::promise<void> running;
    std::promise<void> release;
    const auto released = release.get_future().share();
    const auto calls = std::make_shared<std::atomic<int>>(0);
    watcher->Added([&running, released, calls](const auto&, const auto&) {
        if (++*calls == 1)
            running.set_value();
        released.wait();
        return winrt::result::ok;
    });
    watcher->Start();
    watcher->reportAdded(device(u"d"));
    ASSERT_EQ(running.get_future().wait_for(patience), std::future_status::ready);
    watcher->reportAdded(device(u"d")); // waits behind the first
    watcher.reset();
    release.set_value();
    EXPECT_TRUE(waitUntil([&] { return weak.expired(); }));
    // The second event may still have found the watcher, but none runs after its end.
    const int atEnd = *calls;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(*calls, atEnd);
}

} // namespace
