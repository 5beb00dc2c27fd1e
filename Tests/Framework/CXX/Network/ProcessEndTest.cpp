#include "Tests/Framework/CXX/Network/TestConnection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QProcess>
#include <csignal>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

using namespace std::string_literals;
using testing::HasSubstr;

namespace {

/// A process of its own that serves on a port; killed at the end if it still runs.
class Probe {
public:
    explicit Probe(const char* mode) {
        _process.start(NETWORK_PROBE, {mode});
        EXPECT_TRUE(turnUntil([this] { return _process.canReadLine(); }));
        _port = static_cast<quint16>(_process.readLine().trimmed().toUInt());
    }

    ~Probe() {
        _process.kill();
        _process.waitForFinished();
    }

    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    quint16 port() const { return _port; }

    bool hasEnded() {
        return turnUntil([this] { return _process.state() == QProcess::NotRunning; });
    }

    bool isRunning() const { return _process.state() == QProcess::Running; }
    int endingSignal() const { return _process.exitStatus() == QProcess::CrashExit ? _process.exitCode() : 0; }
    std::string errorOutput() { return _process.readAllStandardError().toStdString(); }

    /// Processor time used so far, in clock ticks.
    long cpuTicks() const {
        std::ifstream file("/proc/" + std::to_string(_process.processId()) + "/stat");
        const std::string stat((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        // Behind the name in brackets: the state is field 3, user and system time are fields 14 and 15.
        std::istringstream fields(stat.substr(stat.rfind(')') + 1));
        std::string skipped;
        for (int field = 3; field < 14; ++field)
            fields >> skipped;
        long user = 0;
        long system = 0;
        fields >> user >> system;
        return user + system;
    }

private:
    QProcess _process;
    quint16 _port = 0;
};

TEST(ProcessEndTest, AnExceptionOfAMessageHandlerEndsTheProcessAndNamesItsCause) {
    Probe probe("tcp");
    TestConnection connection(probe.port());
    connection.send("hello\0"s);
    ASSERT_TRUE(probe.hasEnded());
    EXPECT_EQ(probe.endingSignal(), SIGABRT);
    const std::string errors = probe.errorOutput();
    EXPECT_THAT(errors, HasSubstr("std::runtime_error"));
    EXPECT_THAT(errors, HasSubstr("what():  no answer to hello"));
    EXPECT_EQ(connection.received(), "");
}

TEST(ProcessEndTest, AThrownIntegerEndsTheProcessToo) {
    Probe probe("tcp-integer");
    TestConnection connection(probe.port());
    connection.send("\0"s);
    ASSERT_TRUE(probe.hasEnded());
    EXPECT_EQ(probe.endingSignal(), SIGABRT);
    EXPECT_THAT(probe.errorOutput(), HasSubstr("'int'"));
}

TEST(ProcessEndTest, AMessageWithoutAHandlerEndsTheProcess) {
    Probe probe("tcp-nothing");
    TestConnection connection(probe.port());
    connection.send("hello\0"s);
    ASSERT_TRUE(probe.hasEnded());
    EXPECT_EQ(probe.endingSignal(), SIGABRT);
    EXPECT_THAT(probe.errorOutput(), HasSubstr("std::bad_function_call"));
}

TEST(ProcessEndTest, AnExceptionOfARouteHandlerEndsTheProcessAndNamesItsCause) {
    Probe probe("http");
    TestConnection connection(probe.port());
    connection.send("GET /throw HTTP/1.1\r\n\r\n");
    ASSERT_TRUE(probe.hasEnded());
    EXPECT_EQ(probe.endingSignal(), SIGABRT);
    EXPECT_THAT(probe.errorOutput(), HasSubstr("what():  no answer to /throw"));
    EXPECT_EQ(connection.received(), "");
}

TEST(ProcessStartTest, TheFirstConnectionOfAProcessHasTheNumber2) {
    Probe probe("http");
    TestConnection first(probe.port());
    first.send("GET /id HTTP/1.1\r\n\r\n");
    EXPECT_THAT(first.receiveUntil("\r\n\r\n2"), HasSubstr("Content-Length: 1"));
    TestConnection second(probe.port());
    second.send("GET /id HTTP/1.1\r\n\r\n");
    EXPECT_THAT(second.receiveUntil("\r\n\r\n3"), HasSubstr("Content-Length: 1"));
}

class SpinningRequestTest : public testing::TestWithParam<const char*> {};

TEST_P(SpinningRequestTest, HoldsTheThreadAndIsNeverAnswered) {
    Probe probe("http");
    TestConnection before(probe.port());
    before.send("GET /id HTTP/1.1\r\n\r\n");
    before.receiveUntil("\r\n\r\n2");
    const std::string answered = before.received();

    TestConnection connection(probe.port());
    connection.send(GetParam());
    before.send("GET /id HTTP/1.1\r\n\r\n"); // perhaps just in time, but then once only

    // Half a second of processor time: more than serving all of this takes, however slow the machine.
    const long enough = probe.cpuTicks() + sysconf(_SC_CLK_TCK) / 2;
    EXPECT_TRUE(turnUntil([&] { return probe.cpuTicks() >= enough; }));

    const std::string received = before.received();
    before.send("GET /id HTTP/1.1\r\n\r\n");
    const long more = probe.cpuTicks() + sysconf(_SC_CLK_TCK) / 2;
    EXPECT_TRUE(turnUntil([&] { return probe.cpuTicks() >= more; }));
    EXPECT_EQ(before.received(), received) << "another connection is still served";
    EXPECT_LE(received.size(), 2 * answered.size());
    EXPECT_EQ(connection.received(), "");
    EXPECT_TRUE(probe.isRunning());
}

INSTANTIATE_TEST_SUITE_P(HttpClient, SpinningRequestTest,
                         testing::Values("PUT /id HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
                                         "PUT /id HTTP/1.1\r\nTransfer-Encoding: gzip\r\n\r\n",
                                         "PUT /id HTTP/1.1\r\nTransfer-Encoding: Chunked\r\n\r\n", "\r\n"));

} // namespace
