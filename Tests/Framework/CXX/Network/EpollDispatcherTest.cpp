#include "Framework/CXX/Network/EpollDispatcher.h"

#include "Tests/Framework/CXX/Network/TestConnection.h"

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <atomic>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

/// A descriptor that is readable until it is closed.
class Readable {
public:
    ~Readable() { ::close(descriptor); }

    const int descriptor = ::eventfd(1, EFD_CLOEXEC | EFD_NONBLOCK);
};

/// What the event loop of the calling thread does in its turns, with one of each kind to do in the first of them.
Texts orderOfEvents() {
    Texts done;
    QEventLoop loop;
    const Readable readable;
    QSocketNotifier notifier(readable.descriptor, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &loop, [&] {
        done.push_back("socket");
        notifier.setEnabled(false);
        QMetaObject::invokeMethod(&loop, [&] { done.push_back("posted by the socket"); }, Qt::QueuedConnection);
    });
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] { done.push_back("timer"); });
    timer.start(1);
    while (timer.remainingTime() > 0)
        std::this_thread::yield();
    auto* const deleted = new QObject;
    QObject::connect(deleted, &QObject::destroyed, &loop, [&] { done.push_back("deleted"); });
    QMetaObject::invokeMethod(&loop, [&] { done.push_back("posted"); }, Qt::QueuedConnection);
    QMetaObject::invokeMethod(&loop, [&] { deleted->deleteLater(); }, Qt::QueuedConnection);
    QTimer::singleShot(100, &loop, [&] { loop.quit(); });
    loop.exec();
    return done;
}

/// Until there is nothing to do in a turn.
void settleTurns(QEventLoop::ProcessEventsFlags flags) {
    while (QEventLoop().processEvents(flags)) {
    }
}

TEST(EpollDispatcherTest, IsWhatTheTestsRunOn) {
    EXPECT_NE(dynamic_cast<EpollDispatcher*>(QAbstractEventDispatcher::instance()), nullptr);
}

TEST(EpollDispatcherTest, PostedEventsComeBeforeSocketsAndTheseBeforeTimersAsWithQtsOwn) {
    const Texts order = orderOfEvents();
    EXPECT_EQ(order, (Texts{"posted", "socket", "timer", "deleted", "posted by the socket"}));
    Texts orderOfQtsOwn;
    std::thread([&] {
        orderOfQtsOwn = orderOfEvents();
        EXPECT_EQ(dynamic_cast<EpollDispatcher*>(QAbstractEventDispatcher::instance()), nullptr);
    }).join();
    EXPECT_EQ(order, orderOfQtsOwn);
}

// What other threads post is left to Qt, whose locks the thread sanitizer does not see.
TEST(EpollDispatcherTest, NoWakeUpOfAnotherThreadIsLost) {
    constexpr int threads = 4;
    constexpr int wakeUps = 5000;
    auto* const dispatcher = QAbstractEventDispatcher::instance();
    QEventLoop loop;
    std::atomic<int> done{0};
    QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, &loop, [&] {
        if (done == threads * wakeUps)
            loop.quit();
    });
    std::vector<std::thread> waking;
    for (int i = 0; i < threads; ++i)
        waking.emplace_back([&] {
            for (int wakeUp = 0; wakeUp < wakeUps; ++wakeUp) {
                ++done;
                dispatcher->wakeUp();
            }
        });
    loop.exec(); // nothing else wakes it up
    for (std::thread& thread : waking)
        thread.join();
    EXPECT_EQ(done, threads * wakeUps);
}

TEST(EpollDispatcherTest, ALoopEndsWhenAnotherThreadEndsIt) {
    constexpr int rounds = 200;
    for (int round = 0; round < rounds; ++round) {
        QEventLoop loop;
        std::thread ending; // from within the loop: an end before its beginning is none
        QTimer::singleShot(0, &loop, [&] { ending = std::thread([&] { loop.exit(round); }); });
        EXPECT_EQ(loop.exec(), round);
        ending.join();
    }
}

TEST(EpollDispatcherTest, AnInterruptWithinAPostedEventEndsTheTurn) {
    QObject receiver;
    const Readable readable;
    QSocketNotifier notifier(readable.descriptor, QSocketNotifier::Read);
    int activations = 0;
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&] { ++activations; });
    QMetaObject::invokeMethod(
        &receiver, [] { QAbstractEventDispatcher::instance()->interrupt(); }, Qt::QueuedConnection);
    EXPECT_FALSE(QEventLoop().processEvents(QEventLoop::WaitForMoreEvents)); // returns
    EXPECT_EQ(activations, 0);
    EXPECT_TRUE(QEventLoop().processEvents(QEventLoop::AllEvents));
    EXPECT_EQ(activations, 1);
}

TEST(EpollDispatcherTest, ComesToRestAndWaitsForNothingUnlessItIsTold) {
    settleEventLoop();
    EXPECT_FALSE(QEventLoop().processEvents(QEventLoop::AllEvents));
    EXPECT_FALSE(QAbstractEventDispatcher::instance()->hasPendingEvents());
    QObject receiver;
    QMetaObject::invokeMethod(&receiver, [] {}, Qt::QueuedConnection);
    EXPECT_TRUE(QAbstractEventDispatcher::instance()->hasPendingEvents());
    settleEventLoop();
}

TEST(EpollDispatcherTest, SocketsWaitWhileTheyAreExcluded) {
    constexpr auto withoutSockets = QEventLoop::ExcludeSocketNotifiers;
    const Readable readable;
    QSocketNotifier notifier(readable.descriptor, QSocketNotifier::Read);
    int activations = 0;
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&] { ++activations; });
    settleTurns(withoutSockets);
    bool isOver = false;
    QTimer::singleShot(1, &notifier, [&] { isOver = true; });
    EXPECT_TRUE(QEventLoop().processEvents(withoutSockets | QEventLoop::WaitForMoreEvents));
    EXPECT_TRUE(isOver);
    QEventLoop loop;
    std::thread ending;
    QTimer::singleShot(0, &loop, [&] { ending = std::thread([&] { loop.quit(); }); });
    loop.exec(withoutSockets);
    ending.join();
    EXPECT_EQ(activations, 0);
    EXPECT_TRUE(QEventLoop().processEvents(QEventLoop::AllEvents));
    EXPECT_EQ(activations, 1);
}

TEST(EpollDispatcherTest, TimersWaitWhileTheyAreExcluded) {
    QTimer timer;
    int timeouts = 0;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] { ++timeouts; });
    timer.start(0);
    QEventLoop().processEvents(QEventLoop::X11ExcludeTimers);
    EXPECT_EQ(timeouts, 0);
    const Readable readable;
    const QSocketNotifier notifier(readable.descriptor, QSocketNotifier::Read);
    QEventLoop().processEvents(QEventLoop::X11ExcludeTimers | QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(timeouts, 0);
    QEventLoop().processEvents(QEventLoop::AllEvents);
    EXPECT_EQ(timeouts, 1);
}

TEST(EpollDispatcherTest, TimersThatAreAlwaysDueAndSocketsThatAreAlwaysReadyLeaveEachOtherRoom) {
    const Readable readable;
    const QSocketNotifier notifier(readable.descriptor, QSocketNotifier::Read);
    int activations = 0;
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&] { ++activations; });
    QTimer timer;
    int timeouts = 0;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] { ++timeouts; });
    timer.start(0);
    for (int turn = 0; turn < 10; ++turn)
        QEventLoop().processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(activations, 10);
    EXPECT_EQ(timeouts, 10);
}

TEST(EpollDispatcherTest, ASignalDoesNotEndAWait) {
    static std::atomic<int> caught;
    caught = 0;
    struct sigaction counting{};
    counting.sa_handler = [](int) { ++caught; };
    struct sigaction before{};
    ASSERT_EQ(sigaction(SIGUSR2, &counting, &before), 0);
    std::atomic<bool> hasReturned{false};
    std::thread sending([&, waiting = pthread_self()] {
        while (!hasReturned) {
            pthread_kill(waiting, SIGUSR2);
            std::this_thread::yield();
        }
    });
    for (const auto excluded : {QEventLoop::AllEvents, QEventLoop::ExcludeSocketNotifiers}) {
        QTimer timer;
        bool isOver = false;
        QObject::connect(&timer, &QTimer::timeout, &timer, [&] { isOver = true; });
        settleEventLoop();
        timer.start(50);
        QEventLoop().processEvents(QEventLoop::WaitForMoreEvents | excluded);
        EXPECT_TRUE(isOver);
    }
    hasReturned = true;
    sending.join();
    sigaction(SIGUSR2, &before, nullptr);
    EXPECT_GT(caught, 0);
}

TEST(EpollDispatcherTest, WhatIsDeletedLaterStaysForALoopWithin) {
    QEventLoop loop;
    auto* const object = new QObject;
    bool isDeleted = false;
    bool isDeletedWithin = true;
    QObject::connect(object, &QObject::destroyed, &loop, [&] {
        isDeleted = true;
        loop.quit();
    });
    QTimer::singleShot(0, &loop, [&] {
        object->deleteLater();
        QEventLoop within;
        QTimer::singleShot(1, &within, [&] { within.quit(); });
        within.exec();
        isDeletedWithin = isDeleted;
    });
    loop.exec();
    EXPECT_FALSE(isDeletedWithin);
    EXPECT_TRUE(isDeleted);
}

TEST(EpollDispatcherTest, TellsOfItsTimersAndChangesThem) {
    QTimer timer;
    timer.setInterval(1'000'000);
    EXPECT_EQ(timer.remainingTime(), -1);
    timer.start();
    EXPECT_GT(timer.remainingTime(), 500'000);
    auto* const dispatcher = QAbstractEventDispatcher::instance();
    ASSERT_EQ(dispatcher->registeredTimers(&timer).size(), 1);
    EXPECT_EQ(dispatcher->registeredTimers(&timer).front().timerType, Qt::CoarseTimer);
    bool isOver = false;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] { isOver = true; });
    timer.setInterval(1);
    EXPECT_TRUE(turnUntil([&] { return isOver; }));
    timer.stop();
    EXPECT_TRUE(dispatcher->registeredTimers(&timer).isEmpty());
}

} // namespace
