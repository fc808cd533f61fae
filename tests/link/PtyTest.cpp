// The serial channel on pseudo-terminal pairs made here: the test plays the
// far end on the master side (exact bytes, answers, K-Line echo, silence,
// trickling, unplugging). The program side runs on the real host loop.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "core/Host.h"
#include "core/ProgramState.h"
#include "link/ComPort.h"
#include "link/Ports.h"
#include "link/SerialChannel.h"

namespace vortelm::link {
namespace {

constexpr const char* kCaution =
    "Caution ! Communication port used by other application ! Please select a different port ";

class RecordingHost : public Host {
  public:
    std::vector<std::string> boxes;
    std::string terminal;
    MsgAnswer messageBox(std::string_view text, MsgButtons b, MsgIcon i,
                         std::string_view t) override {
        boxes.emplace_back(text);
        return Host::messageBox(text, b, i, t);
    }
    void terminalAppended(std::string_view text) override { terminal.append(text); }
};

// A pty pair; the master is the far end.
struct Pty {
    int master = -1;
    std::string slave;
    Pty() {
        master = posix_openpt(O_RDWR | O_NOCTTY);
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) return;
        slave = ptsname(master);
    }
    ~Pty() { closeMaster(); }
    void closeMaster() {
        if (master >= 0) ::close(master);
        master = -1;
    }
    void put(std::string_view bytes) const { (void)!::write(master, bytes.data(), bytes.size()); }
    // Reads until n bytes came or a second of silence passed.
    std::string take(std::size_t n) const {
        std::string out;
        while (out.size() < n) {
            pollfd p{master, POLLIN, 0};
            if (::poll(&p, 1, 1000) <= 0) break;
            char buf[256];
            ssize_t k = ::read(master, buf, std::min(sizeof buf, n - out.size()));
            if (k <= 0) break;
            out.append(buf, std::size_t(k));
        }
        return out;
    }
};

class PtyTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_GE(pty.master, 0);
        st.portOverride = pty.slave;
        port.setSettingsText("9600,n,8,1");
        ASSERT_TRUE(port.open());
        port.setReceiveThreshold(0);
    }
    void TearDown() override {
        if (peer.joinable()) peer.join();
    }

    RecordingHost host;
    ProgramState st{host};
    ComPort port{st};
    Pty pty;
    std::thread peer;
};

TEST_F(PtyTest, BytesArriveExactly) {
    std::vector<uint8_t> block;
    for (int i = 0; i < 256; ++i) block.push_back(uint8_t(i));
    port.SSSendN(block);
    const std::string got = pty.take(256);
    ASSERT_EQ(got.size(), 256u);
    for (int i = 0; i < 256; ++i) EXPECT_EQ(uint8_t(got[std::size_t(i)]), i);
}

TEST_F(PtyTest, PeerAnswers) {
    peer = std::thread([this] {
        if (pty.take(1) == "\x55") pty.put("\xAA");
    });
    port.SSSend(0x55);
    EXPECT_EQ(port.SSReceive(2000), 0xAA);
}

TEST_F(PtyTest, KLineEchoThenReply) {
    st.KLINE = 1;
    peer = std::thread([this] {
        std::string b = pty.take(1);
        pty.put(b);       // the echo of the one wire
        pty.put("\x3C");  // the reply
    });
    port.SSSend(0x33);
    EXPECT_EQ(port.SSReceive(2000), 0x3C);
}

TEST_F(PtyTest, KLineBlockEcho) {
    st.KLINE = 1;
    peer = std::thread([this] { pty.put(pty.take(4)); });
    std::vector<uint8_t> block{1, 2, 3, 4};
    port.SSSendN(block);
    EXPECT_EQ(block, (std::vector<uint8_t>{1, 2, 3, 4}));
    EXPECT_EQ(port.inCount(), 0);
}

TEST_F(PtyTest, SilentPeerTimesOut) {
    EXPECT_EQ(port.SSReceive(100), -1);
    std::vector<uint8_t> buf(4);
    EXPECT_EQ(port.SSReceiveN(buf, 100), -1);
}

TEST_F(PtyTest, TricklingBytesMakeTheBlock) {
    // 10 bytes 80 ms apart: the block takes longer than the time-out, each
    // gap is well inside it.
    peer = std::thread([this] {
        for (char c = '0'; c <= '9'; ++c) {
            std::this_thread::sleep_for(std::chrono::milliseconds(80));
            pty.put(std::string(1, c));
        }
    });
    std::vector<uint8_t> buf(10);
    EXPECT_EQ(port.SSReceiveN(buf, 500), 0) << port.inCount() << " " << port.TimerElapsed;
    EXPECT_EQ(std::string(buf.begin(), buf.end()), "0123456789");
}

TEST_F(PtyTest, IdleBytesReachTheRunningText) {
    port.setReceiveThreshold(1);
    pty.put("ready>");
    for (int i = 0; i < 200 && host.terminal.size() < 6; ++i) host.yield(host.nowUs() + 10'000);
    EXPECT_EQ(host.terminal, "ready>");
    EXPECT_EQ(st.terminalBuffer, "ready>");
}

TEST_F(PtyTest, UnpluggedAdapterShowsCaution) {
    pty.closeMaster();
    EXPECT_EQ(port.SSReceive(50), -1);
    port.SSSend(0x01);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0], kCaution);
    EXPECT_NE(host.terminal.find("*Port " + pty.slave + ": "), std::string::npos);
    EXPECT_EQ(port.pollFd(), -1);  // a line that is gone is not polled
}

TEST_F(PtyTest, LineSettingsReachTheDevice) {
    port.setSettingsText("19200,n,8,1");
    int fd = ::open(pty.slave.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_GE(fd, 0);
    termios t{};
    ASSERT_EQ(tcgetattr(fd, &t), 0);
    ::close(fd);
    EXPECT_EQ(t.c_cflag & CSIZE, tcflag_t(CS8));
    EXPECT_FALSE(t.c_cflag & PARENB);
    EXPECT_FALSE(t.c_cflag & CSTOPB);
    EXPECT_FALSE(t.c_lflag & (ICANON | ECHO));
    EXPECT_FALSE(t.c_cflag & HUPCL);
    EXPECT_TRUE(t.c_cflag & CLOCAL);
    EXPECT_EQ(cfgetospeed(&t), speed_t(B19200));
}

// A pty keeps 8 data bits and no parity: the port says so once and goes on.
TEST_F(PtyTest, RefusedParityIsReportedOnce) {
    port.setSettingsText("9600,e,7,1");
    port.setSettingsText("9600,o,7,1");
    std::size_t first = host.terminal.find("unsupported by this port");
    ASSERT_NE(first, std::string::npos) << host.terminal;
    EXPECT_EQ(host.terminal.find("unsupported", first + 1), std::string::npos);
    EXPECT_TRUE(host.boxes.empty()) << host.terminal;
    peer = std::thread([this] { pty.put("ok"); });
    std::vector<uint8_t> buf(2);
    EXPECT_EQ(port.SSReceiveN(buf, 2000), 0);
}

TEST(PtyOpen, RefusedFrameStillLeavesTheLineRaw) {
    RecordingHost host;
    ProgramState st{host};
    ComPort port{st};
    Pty pty;
    st.portOverride = pty.slave;
    port.setSettingsText("9600,e,7,1");
    ASSERT_TRUE(port.open());
    port.setReceiveThreshold(0);
    pty.put("x");  // no line end: a canonical line would hold it back
    EXPECT_EQ(port.SSReceive(2000), 'x');
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(PtyTest, CustomRateIsTaken) {
    ASSERT_NE(port.channel(), nullptr);
    channel::LineSettings ls;
    ls.baud = 250000;
    EXPECT_NE(port.channel()->configure(ls), channel::Control::Failed);
}

TEST_F(PtyTest, UnsupportedModemLinesReportedOnce) {
    port.setRts(true);
    port.setDtr(true);
    port.setRts(false);
    EXPECT_TRUE(port.isOpen());
    std::size_t count = 0;
    for (std::size_t p = host.terminal.find("unsupported"); p != std::string::npos;
         p = host.terminal.find("unsupported", p + 1))
        ++count;
    auto c = port.channel()->setRts(true);
    if (c == channel::Control::Unsupported)
        EXPECT_EQ(count, 1u);
    else
        EXPECT_EQ(count, 0u);
    EXPECT_TRUE(host.boxes.empty());
}

// ---- opening failures and their diagnosis

TEST(PortDiagnosis, PermissionNamesOwnerModeAndDialout) {
    char name[] = "/tmp/vortelm-perm-XXXXXX";
    int fd = mkstemp(name);
    ASSERT_GE(fd, 0);
    ::close(fd);
    ASSERT_EQ(chmod(name, 0), 0);
    // Root opens it anyway: the errno of a refused open is given as it would come.
    const std::string d = DiagnosePortFailure(name, EACCES, "Permission denied", {});
    unlink(name);
    EXPECT_EQ(d.rfind(std::string("\r\n*Port ") + name + ": Permission denied", 0), 0u) << d;
    EXPECT_NE(d.find("mode ----------"), std::string::npos) << d;
    EXPECT_NE(d.find("belongs to user "), std::string::npos) << d;
    EXPECT_NE(d.find("dialout"), std::string::npos) << d;
}

TEST(PortDiagnosis, BusyNamesTheProcessHoldingThePort) {
    char name[] = "/tmp/vortelm-busy-XXXXXX";
    int fd = mkstemp(name);
    ASSERT_GE(fd, 0);
    const std::string d = DiagnosePortFailure(name, EBUSY, "Device or resource busy", {});
    ::close(fd);
    unlink(name);
    EXPECT_NE(d.find("held by process " + std::to_string(getpid()) + " ("), std::string::npos) << d;
}

TEST(PortDiagnosis, MissingListsThePorts) {
    std::vector<PortInfo> ports{
        {"/dev/ttyUSB0", "USB 0403:6001 Adapter A1", "/dev/serial/by-id/usb-x"},
        {"sim:", "virtual board in process", ""}};
    const std::string d =
        DiagnosePortFailure("/dev/ttyUSB7", ENOENT, "No such file or directory", ports);
    EXPECT_EQ(d,
              "\r\n*Port /dev/ttyUSB7: No such file or directory"
              "\r\n*No such device. Ports of this system:"
              "\r\n*  /dev/ttyUSB0  USB 0403:6001 Adapter A1  (/dev/serial/by-id/usb-x)"
              "\r\n*  sim:  virtual board in process");
}

TEST(PortDiagnosis, OpeningAMissingDeviceShowsCautionAndTheList) {
    RecordingHost host;
    ProgramState st{host};
    ComPort port{st};
    st.portOverride = "/dev/vortelm-no-such-port";
    EXPECT_FALSE(port.open());
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0], kCaution);
    EXPECT_NE(host.terminal.find("\r\n*Port /dev/vortelm-no-such-port: No such file or directory"),
              std::string::npos);
    EXPECT_NE(host.terminal.find("\r\n*  sim:"), std::string::npos);
}

TEST(PortDiagnosis, AFileIsNoSerialDevice) {
    char name[] = "/tmp/vortelm-file-XXXXXX";
    int fd = mkstemp(name);
    ASSERT_GE(fd, 0);
    ::close(fd);
    int err = 0;
    std::string reason;
    auto ch = SerialChannel::open(name, {}, err, reason);
    unlink(name);
    EXPECT_EQ(ch, nullptr);
    EXPECT_EQ(err, ENOTTY);
}

TEST(PortList, EndsWithTheBoard) {
    auto ports = ListPorts();
    ASSERT_FALSE(ports.empty());
    EXPECT_EQ(ports.back().path, "sim:");
}

TEST(PortText, ComNumbersMapToTtyS) {
    EXPECT_EQ(ComDevicePath(1), "/dev/ttyS0");
    EXPECT_EQ(PortDevice("COM4"), "/dev/ttyS3");
    EXPECT_EQ(PortDevice("com12"), "/dev/ttyS11");
    EXPECT_EQ(PortDevice("/dev/ttyUSB0"), "/dev/ttyUSB0");
    EXPECT_EQ(PortDevice("COMX"), "COMX");
}

TEST(PortText, SettingsText) {
    channel::LineSettings ls;
    ASSERT_TRUE(ParseSettingsText("115200,e,7,2", ls));
    EXPECT_EQ(ls.baud, 115200u);
    EXPECT_EQ(ls.parity, channel::Parity::Even);
    EXPECT_EQ(ls.dataBits, 7);
    EXPECT_EQ(ls.stopBits, 2);
    EXPECT_FALSE(ParseSettingsText("9600,x,8,1", ls));
    EXPECT_FALSE(ParseSettingsText("9600,n,8", ls));
    EXPECT_FALSE(ParseSettingsText(",n,8,1", ls));
    EXPECT_FALSE(ParseSettingsText("99999999999,n,8,1", ls));
}

}  // namespace
}  // namespace vortelm::link
