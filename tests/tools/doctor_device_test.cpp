// Broken set-ups, staged with real files and pseudo-terminals.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "kkm/doctor.h"
#include "support/temp_directory.h"

namespace kkm {
namespace {

using testing::ElementsAre;

std::vector<std::string> KeysOf(const std::vector<Finding>& findings) {
    std::vector<std::string> keys;
    for (const Finding& finding : findings) {
        EXPECT_EQ(finding.advice.empty(), finding.grade == Grade::good) << finding.key;
        if (finding.key != "holders_hidden") {  // depends on who runs the tests
            keys.push_back(finding.key);
        }
    }
    return keys;
}

// A tty whose other end is held here.
class Tty {
  public:
    Tty() {
        char name[64];
        EXPECT_EQ(openpty(&master_, &slave_, name, nullptr, nullptr), 0);
        name_ = name;
    }
    ~Tty() {
        close(master_);
        close(slave_);
    }
    Tty(const Tty&) = delete;
    Tty& operator=(const Tty&) = delete;

    const std::string& name() const { return name_; }
    int master() const { return master_; }

  private:
    int master_ = -1;
    int slave_ = -1;
    std::string name_;
};

// Somebody without rights, for a while; nothing changes for a test that has none.
class Nobody {
  public:
    Nobody() { EXPECT_EQ(seteuid(geteuid() == 0 ? 65534 : geteuid()), 0); }
    ~Nobody() { EXPECT_EQ(seteuid(getuid()), 0); }
    Nobody(const Nobody&) = delete;
    Nobody& operator=(const Nobody&) = delete;
};

TEST(DoctorDevice, GoodTty) {
    const Tty tty;
    EXPECT_THAT(KeysOf(ExamineDevice(tty.name())), ElementsAre("device"));
}

TEST(DoctorDevice, MissingDevice) {
    EXPECT_THAT(KeysOf(ExamineDevice("/nowhere/tty")), ElementsAre("device_missing"));
}

TEST(DoctorDevice, FileThatIsNoDevice) {
    const test::TempDirectory folder;
    std::ofstream("file") << "x";
    EXPECT_THAT(KeysOf(ExamineDevice("file")), ElementsAre("not_a_serial_line"));
}

TEST(DoctorDevice, NoPermission) {
    const Tty tty;
    ASSERT_EQ(chmod(tty.name().c_str(), 0), 0);
    const Nobody nobody;
    EXPECT_THAT(KeysOf(ExamineDevice(tty.name())), ElementsAre("no_permission"));
}

TEST(DoctorDevice, NoPermissionThatAGroupCouldGive) {
    const Tty tty;
    ASSERT_EQ(chmod(tty.name().c_str(), 0600), 0);
    const Nobody nobody;
    const auto findings = ExamineDevice(tty.name());
    if (geteuid() == 65534) {  // else the owner may open it
        ASSERT_THAT(KeysOf(findings), ElementsAre("no_permission"));
        EXPECT_THAT(findings[0].what, testing::HasSubstr(", which has mode 600 and belongs to "));
        EXPECT_THAT(findings[0].advice, testing::HasSubstr("udev rule"));
    }
}

// Another process with the file open.
class Holder {
  public:
    explicit Holder(const Tty& tty, const char* file) {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        process_ = fork();
        if (process_ == 0) {
            close(tty.master());
            const bool open_there = open(file, O_RDWR | O_NOCTTY) >= 0;
            if (write(ready[1], &open_there, 1) == 1) {
                pause();
            }
            _exit(0);
        }
        char byte = 0;
        EXPECT_EQ(read(ready[0], &byte, 1), 1);
        close(ready[0]);
        close(ready[1]);
    }
    ~Holder() {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

  private:
    pid_t process_ = -1;
};

TEST(DoctorDevice, AnotherHolder) {
    const Tty tty;
    const Holder holder(tty, tty.name().c_str());
    EXPECT_THAT(KeysOf(ExamineDevice(tty.name())), ElementsAre("device", "held_by_another"));
}

TEST(DoctorDevice, NobodyIsToEndWhatUsesADeviceThatIsNoSerialLine) {
    const Tty tty;
    const Holder holder(tty, "/dev/null");
    EXPECT_THAT(KeysOf(ExamineDevice("/dev/null")), ElementsAre("not_a_serial_line"));
}

TEST(DoctorDevice, ProcessesThatCannotBeLookedAtAreTold) {
    const Tty tty;
    ASSERT_EQ(chmod(tty.name().c_str(), 0666), 0);
    const Nobody nobody;
    std::error_code error;
    const std::filesystem::directory_iterator first("/proc/1/fd", error);
    if (!error) {
        GTEST_SKIP() << "the first process is this user's own";
    }
    const auto findings = ExamineDevice(tty.name());
    EXPECT_THAT(findings, testing::Contains(testing::Field(&Finding::key, "holders_hidden")));
}

TEST(DoctorDevice, AdapterThatKeepsBytesBack) {
    const test::TempDirectory folder;
    const Tty tty;
    const auto adapter = std::filesystem::path(tty.name()).filename() / "device";
    std::filesystem::create_directories(adapter);
    std::ofstream(adapter / "latency_timer") << "16\n";
    const auto findings = ExamineDevice(tty.name(), ".");
    ASSERT_THAT(KeysOf(findings), ElementsAre("device", "adapter_latency"));
    EXPECT_EQ(findings.back().what, "the adapter keeps received bytes back for up to 16 ms");
    std::ofstream(adapter / "latency_timer") << "1\n";
    EXPECT_THAT(KeysOf(ExamineDevice(tty.name(), ".")), ElementsAre("device"));
}

TEST(DoctorTrace, GoodDirectory) {
    const test::TempDirectory folder;
    EXPECT_THAT(KeysOf(ExamineTraceFiles("")), ElementsAre("trace"));
}

TEST(DoctorTrace, FileThatCannotBeWritten) {
    const test::TempDirectory folder;
    ASSERT_EQ(mkdir("VeskTarvoM5.log", 0700), 0);
    EXPECT_THAT(KeysOf(ExamineTraceFiles(".")), ElementsAre("trace_not_writable"));
}

TEST(DoctorTrace, DirectoryThatIsMissingOrForbidden) {
    const test::TempDirectory folder;
    EXPECT_THAT(KeysOf(ExamineTraceFiles("missing")), ElementsAre("trace_not_writable"));
}

// The kernel's own file system of processes has no room at all.
TEST(DoctorTrace, FullDisk) {
    EXPECT_THAT(KeysOf(ExamineTraceFiles("/proc")), testing::Contains("disk_full"));
}

TEST(DoctorTrace, HugeFile) {
    const test::TempDirectory folder;
    std::ofstream("VeskTarvoM5.log") << "x";
    ASSERT_EQ(truncate("VeskTarvoM5.log", 100'000'001), 0);
    EXPECT_THAT(KeysOf(ExamineTraceFiles(".")), ElementsAre("trace_huge"));
    ASSERT_EQ(truncate("VeskTarvoM5.log", 100'000'000), 0);
    EXPECT_THAT(KeysOf(ExamineTraceFiles(".")), ElementsAre("trace"));
}

}  // namespace
}  // namespace kkm
