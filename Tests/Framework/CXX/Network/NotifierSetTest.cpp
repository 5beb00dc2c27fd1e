#include "Framework/CXX/Network/EpollDispatcher.h"
#include "Tests/Framework/CXX/Network/PlainPeer.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <QTcpServer>
#include <array>
#include <memory>
#include <vector>

namespace {

/// Two ends that are connected.
class Pair {
public:
    Pair() { EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, _ends.data()), 0); }
    ~Pair() {
        closeOwn();
        closeOther();
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;

    int own() const { return _ends[0]; }
    void fill() { EXPECT_EQ(::write(_ends[1], "x", 1), 1); }
    void empty() {
        char byte = 0;
        EXPECT_EQ(::read(_ends[0], &byte, 1), 1);
    }
    void closeOwn() { close(_ends[0]); }
    void closeOther() { close(_ends[1]); }

private:
    static void close(int& descriptor) {
        if (descriptor >= 0)
            ::close(descriptor);
        descriptor = -1;
    }

    std::array<int, 2> _ends{};
};

/// A notifier that counts.
class Counting {
public:
    Counting(
        int descriptor, QSocketNotifier::Type type, std::function<void()> handler = [] {})
        : notifier(descriptor, type) {
        QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [this, handler] {
            ++count;
            handler();
        });
    }

    int count = 0;
    QSocketNotifier notifier;
};

constexpr auto read = QSocketNotifier::Read;
constexpr auto write = QSocketNotifier::Write;
constexpr auto exception = QSocketNotifier::Exception;

bool turn() { return QEventLoop().processEvents(QEventLoop::AllEvents); }

class NotifierSetTest : public testing::Test {
protected:
    NotifierSetTest() {
        EXPECT_NE(dynamic_cast<EpollDispatcher*>(QAbstractEventDispatcher::instance()), nullptr);
        settleEventLoop();
    }
};

TEST_F(NotifierSetTest, IsToldAgainInEachTurnForAsLongAsADescriptorIsReady) {
    Pair pair;
    Counting readable(pair.own(), read);
    EXPECT_FALSE(turn());
    pair.fill();
    EXPECT_TRUE(turn());
    EXPECT_TRUE(turn());
    EXPECT_EQ(readable.count, 2);
    pair.empty();
    EXPECT_FALSE(turn());
    EXPECT_EQ(readable.count, 2);
}

TEST_F(NotifierSetTest, TellsOfRoomOfReadingAndOfUrgentBytesApart) {
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    const int peer = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(server.serverPort());
    ASSERT_EQ(::connect(peer, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    const int accepted = ::accept(static_cast<int>(server.socketDescriptor()), nullptr, nullptr);
    {
        const Counting readable(accepted, read);
        Counting writable(accepted, write);
        const Counting urgent(accepted, exception);
        turn();
        EXPECT_EQ(std::vector({readable.count, writable.count, urgent.count}), std::vector({0, 1, 0}));
        writable.notifier.setEnabled(false);
        EXPECT_EQ(::send(peer, "u", 1, MSG_OOB), 1);
        EXPECT_TRUE(turnUntil([&] { return urgent.count > 0; }));
        EXPECT_EQ(writable.count, 1);
    }
    ::close(accepted);
    ::close(peer);
}

TEST_F(NotifierSetTest, SeveralOfAKindMayBeOnOneDescriptor) {
    Pair pair;
    Counting one(pair.own(), read);
    auto two = std::make_unique<Counting>(pair.own(), read);
    pair.fill();
    turn();
    EXPECT_EQ(one.count, 1);
    EXPECT_EQ(two->count, 1);
    two.reset();
    turn();
    EXPECT_EQ(one.count, 2);
    one.notifier.setEnabled(false);
    EXPECT_FALSE(turn());
}

TEST_F(NotifierSetTest, TheEndOfTheOtherSideIsToldToAll) {
    Pair pair;
    Counting readable(pair.own(), read);
    Counting urgent(pair.own(), exception);
    pair.closeOther();
    turn();
    EXPECT_EQ(readable.count, 1);
    EXPECT_EQ(urgent.count, 1);
}

TEST_F(NotifierSetTest, NothingIsToldToANotifierThatIsDisabledOrDeletedInTheSameTurn) {
    Pair first;
    Pair second;
    Pair third;
    for (Pair* const pair : {&first, &second, &third})
        pair->fill();
    std::unique_ptr<Counting> one;
    std::unique_ptr<Counting> two;
    std::unique_ptr<Counting> three;
    int told = 0;
    const auto handler = [&] {
        ++told;
        // The others, whichever this one is.
        for (std::unique_ptr<Counting>* const counting : {&one, &two, &three})
            if ((*counting)->count == 0)
                (*counting)->notifier.setEnabled(false);
    };
    one = std::make_unique<Counting>(first.own(), read, handler);
    two = std::make_unique<Counting>(second.own(), read, handler);
    three = std::make_unique<Counting>(third.own(), read, handler);
    turn();
    EXPECT_EQ(told, 1);

    Pair pair;
    pair.fill();
    std::unique_ptr<Counting> deleted;
    Counting reader(pair.own(), read, [&] { deleted.reset(); });
    deleted = std::make_unique<Counting>(pair.own(), write);
    one->notifier.setEnabled(false);
    two->notifier.setEnabled(false);
    three->notifier.setEnabled(false);
    turn();
    EXPECT_EQ(reader.count, 1);
    EXPECT_EQ(deleted, nullptr);
}

TEST_F(NotifierSetTest, ADescriptorThatIsUsedAnewInTheSameTurnIsNotTakenForTheOneBefore) {
    Pair first;
    Pair second;
    first.fill();
    second.fill();
    std::unique_ptr<Counting> one;
    std::unique_ptr<Counting> two;
    std::unique_ptr<Counting> anew;
    Pair unready;
    // Whichever comes first puts one that isn't ready into the place of the other.
    const auto replace = [&](std::unique_ptr<Counting>& other, Pair& pair) {
        if (anew != nullptr)
            return;
        other.reset();
        ASSERT_EQ(::dup2(unready.own(), pair.own()), pair.own());
        anew = std::make_unique<Counting>(pair.own(), read);
    };
    one = std::make_unique<Counting>(first.own(), read, [&] { replace(two, second); });
    two = std::make_unique<Counting>(second.own(), read, [&] { replace(one, first); });
    turn();
    ASSERT_NE(anew, nullptr);
    EXPECT_EQ(anew->count, 0);
    unready.fill();
    turn();
    EXPECT_EQ(anew->count, 1);
}

TEST_F(NotifierSetTest, ADescriptorThatWasClosedTooEarlyIsWatchedAgainWhenItIsUsedAnew) {
    auto closed = std::make_unique<Pair>();
    const int number = closed->own();
    auto left = std::make_unique<Counting>(number, read);
    closed->closeOwn();
    Pair anew;
    ASSERT_EQ(anew.own(), number);
    Counting readable(number, read);
    anew.fill();
    turn();
    EXPECT_EQ(readable.count, 1);
    left.reset();
    turn();
    EXPECT_EQ(readable.count, 2);
    readable.notifier.setEnabled(false);
}

TEST_F(NotifierSetTest, AFileIsReadyAtAnyTime) {
    const int file = ::open("/proc/self/exe", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(file, 0);
    {
        Counting readable(file, read);
        Counting writable(file, write);
        Counting urgent(file, exception);
        QEventLoop().processEvents(QEventLoop::WaitForMoreEvents); // does not wait
        turn();
        EXPECT_EQ(std::vector({readable.count, writable.count, urgent.count}), std::vector({2, 2, 0}));
        readable.notifier.setEnabled(false);
        turn();
        EXPECT_EQ(writable.count, 3);
        EXPECT_EQ(readable.count, 2);
    }
    EXPECT_FALSE(turn());
    ::close(file);
}

TEST_F(NotifierSetTest, WhatIsNoDescriptorIsToldToTheLogAndWithoutEffect) {
    static std::vector<QString> warnings;
    warnings.clear();
    const auto before = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { warnings.push_back(text); });
    constexpr int none = 1'000'000;
    {
        Counting readable(none, read);
        EXPECT_FALSE(turn());
        EXPECT_EQ(readable.count, 0);
    }
    qInstallMessageHandler(before);
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_TRUE(warnings.front().contains("descriptor 1000000: Bad file descriptor"));
    EXPECT_FALSE(turn());
}

TEST_F(NotifierSetTest, NoneIsForgottenWhereManyAreReady) {
    constexpr int many = 300;
    std::vector<std::unique_ptr<Pair>> pairs;
    std::vector<std::unique_ptr<Counting>> notifiers;
    for (int i = 0; i < many; ++i) {
        pairs.push_back(std::make_unique<Pair>());
        pairs.back()->fill(); // and stays so
        notifiers.push_back(std::make_unique<Counting>(pairs.back()->own(), read));
    }
    constexpr int turns = 30;
    for (int i = 0; i < turns; ++i)
        turn();
    int least = turns;
    int most = 0;
    for (const auto& notifier : notifiers) {
        least = std::min(least, notifier->count);
        most = std::max(most, notifier->count);
    }
    EXPECT_GE(least, 5);
    EXPECT_LE(most - least, 1);
}

TEST_F(NotifierSetTest, ALoopWithinAHandlerLeavesNothingToBeToldTwice) {
    Pair first;
    Pair second;
    Pair third;
    int told = 0;
    const auto handle = [&](Pair& pair) {
        pair.empty();
        if (++told == 1)
            turn();
    };
    const Counting one(first.own(), read, [&] { handle(first); });
    const Counting two(second.own(), read, [&] { handle(second); });
    const Counting three(third.own(), read, [&] { handle(third); });
    for (Pair* const pair : {&first, &second, &third})
        pair->fill();
    turn();
    EXPECT_EQ(std::vector({one.count, two.count, three.count}), std::vector({1, 1, 1}));
}

} // namespace
