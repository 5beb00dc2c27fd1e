#include "Framework/CXX/Network/EpollDispatcher.h"
#include "Tests/Framework/CXX/Network/TestConnection.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

namespace {

/// Connections delete themselves, on the event loop, when they end: no test leaves any behind.
class SettleAfterEachTest : public testing::EmptyTestEventListener {
    void OnTestEnd(const testing::TestInfo&) override { settleEventLoop(); }
};

} // namespace

int main(int argc, char** argv) {
    QCoreApplication::setEventDispatcher(new EpollDispatcher);
    QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new SettleAfterEachTest);
    return RUN_ALL_TESTS();
}
