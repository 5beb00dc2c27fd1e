#include "Services/LarkspurWindowsCameraHub/ServiceParameters.h"

#include "Tests/Support/ScopedEnvironment.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;

class ServiceParametersTest : public testing::Test {
protected:
    void writeRegistry(const std::string& values, const std::string& key = "\\Parameters") const {
        writeFile(_file, "Windows Registry Editor Version 5.00\r\n\r\n"
                         "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\Larkspur Windows Camera Hub" +
                             key + "]\r\n" + values);
    }

    bool modeWith(const std::string& value) const {
        writeRegistry("\"SimulatedCrashModeEnabled\"=" + value + "\r\n");
        return isSimulatedCrashModeEnabled();
    }

    milliseconds waitWith(const std::string& value) const {
        writeRegistry("\"AppThrottle\"=" + value + "\r\n");
        return appThrottleInterval();
    }

private:
    TemporaryFolder _folder;
    std::filesystem::path _file = _folder.path() / "registry.reg";
    ScopedEnvironment _variable{"CAMERA_HUB_REGISTRY", _file};
};

TEST_F(ServiceParametersTest, WithoutAFileTheDefaultsStand) {
    EXPECT_EQ(openParametersKey(), nullptr);
    EXPECT_FALSE(isSimulatedCrashModeEnabled());
    EXPECT_EQ(appThrottleInterval(), milliseconds(2500));
}

TEST_F(ServiceParametersTest, WithoutTheKeyTheDefaultsStand) {
    writeRegistry("\"SimulatedCrashModeEnabled\"=hex:01,00,00,00\r\n\"AppThrottle\"=dword:00001770\r\n", "");
    EXPECT_EQ(openParametersKey(), nullptr);
    EXPECT_FALSE(isSimulatedCrashModeEnabled());
    EXPECT_EQ(appThrottleInterval(), milliseconds(2500));
}

TEST_F(ServiceParametersTest, WithoutTheValuesTheDefaultsStand) {
    writeRegistry("");
    EXPECT_NE(openParametersKey(), nullptr);
    EXPECT_FALSE(isSimulatedCrashModeEnabled());
    EXPECT_EQ(appThrottleInterval(), milliseconds(2500));
}

TEST_F(ServiceParametersTest, AnyBitOfFourBinaryBytesSwitchesTheCrashModeOn) {
    EXPECT_TRUE(modeWith("hex:01,00,00,00"));
    EXPECT_TRUE(modeWith("hex:00,01,00,00"));
    EXPECT_TRUE(modeWith("hex:00,00,00,80"));
    EXPECT_FALSE(modeWith("hex:00,00,00,00"));
}

TEST_F(ServiceParametersTest, ADwordDoesNotSwitchTheCrashModeOn) {
    EXPECT_FALSE(modeWith("dword:00000001"));
    EXPECT_FALSE(modeWith("\"1\""));
    EXPECT_FALSE(modeWith("hex(4):01,00,00,00"));
}

TEST_F(ServiceParametersTest, FewerBytesSwitchTheCrashModeOnMoreDoNot) {
    EXPECT_TRUE(modeWith("hex:01"));
    EXPECT_FALSE(modeWith("hex:"));
    EXPECT_FALSE(modeWith("hex:01,00,00,00,00"));
}

TEST_F(ServiceParametersTest, TheWaitIsHalfTheThrottleRoundedTowardZero) {
    EXPECT_EQ(waitWith("dword:000007d4"), milliseconds(1002)); // 2004
    EXPECT_EQ(waitWith("dword:000007d5"), milliseconds(1002)); // 2005
    EXPECT_EQ(waitWith("dword:00001388"), milliseconds(2500)); // 5000
    EXPECT_EQ(waitWith("dword:7fffffff"), milliseconds(1073741823));
}

TEST_F(ServiceParametersTest, TheWaitIsNeverBelowASecond) {
    EXPECT_EQ(waitWith("dword:00000000"), milliseconds(1000));
    EXPECT_EQ(waitWith("dword:000007cf"), milliseconds(1000)); // 1999
    EXPECT_EQ(waitWith("dword:000007d1"), milliseconds(1000)); // 2001
    EXPECT_EQ(waitWith("dword:ffffffff"), milliseconds(1000)); // -1
    EXPECT_EQ(waitWith("dword:80000000"), milliseconds(1000));
}

TEST_F(ServiceParametersTest, AThrottleOfAnotherTypeLeavesTheDefault) {
    EXPECT_EQ(waitWith("hex:d4,07,00,00"), milliseconds(2500));
    EXPECT_EQ(waitWith("\"2004\""), milliseconds(2500));
    EXPECT_EQ(waitWith("hex(4):d4,07,00,00,00"), milliseconds(2500));
}

TEST_F(ServiceParametersTest, FewerBytesOfAThrottleReplaceTheLowEndOfTheDefault) {
    EXPECT_EQ(waitWith("hex(4):d4,07"), milliseconds(1002));
    EXPECT_EQ(waitWith("hex(4):00"), milliseconds(2432)); // 0x1300 of 0x1388
}

TEST_F(ServiceParametersTest, AChangedFileIsReadAnew) {
    EXPECT_TRUE(modeWith("hex:01,00,00,00"));
    EXPECT_FALSE(modeWith("hex:00,00,00,00"));
}

} // namespace
