#include <array>

#include "config/Kernels.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "link/ComPort.h"
#include "link/Monitor.h"
#include "target/Target.h"

namespace vortelm::target {

namespace {

constexpr const char* kCaution =
    "Caution ! Communication port used by other application ! Please select a different port ";

void ClearDriverLoaded(ProgramState& st) {
    for (auto& unit : st.memoryUnits) unit.driverLoaded = kFalse;
}

}  // namespace

std::string StatusText(int16_t connectionState) {
    static constexpr std::array<const char*, 8> texts{
        "NOT CONNECTED", "CONNECTED AND READY", "USER PROGRAM RUNNING", "DEBUGGING ",
        "STEP MODE",     "DEBUGGING ",          "STEP MODE ",           "DRIVER RUNNING"};
    if (connectionState < 0 || connectionState >= static_cast<int16_t>(texts.size())) return "";
    return texts[static_cast<size_t>(connectionState)];
}

int CheckPreconditions(ProgramState& st, std::string_view feature) {
    if (st.ConnectionState != kConnectedAndReady) {
        Text2Buffer(st, "\r\n*ERROR: Not Connected to Target");
        st.host->refreshStatus();
        return -100;
    }
    if (!feature.empty() && !HasFeature(st, feature, -1)) {
        Text2Buffer(st, "\r\n*ERROR: Kernel feature not supported ");
        return -101;
    }
    return 0;
}

int openPort(Target& t) {
    if (!t.port.isOpen()) return t.port.open() ? 0 : -1;
    return 0;
}

void EnableConnectionCheck(Target& t) {
    if (t.checkTimer >= 0) return;
    t.checkTimer = t.st.host->startTimer(10, [&t]() { CheckConnection(t); });
}

void DisableConnectionCheck(Target& t) {
    if (t.checkTimer < 0) return;
    t.st.host->stopTimer(t.checkTimer);
    t.checkTimer = -1;
}

int connect(Target& t, int prompt) {
    ProgramState& st = t.st;
    link::Boot& boot = t.boot;
    int result = -1;
    DisableConnectionCheck(t);
    st.host->setBusy(true);
    try {
        if (!t.port.isOpen()) (void)t.port.open();
        t.port.clearInput();
        boot.Loader_pre();
        boot.Vortelm_pre();
        ClearDriverLoaded(st);
        const int r = boot.Initiate(prompt);
        if (r >= 0) {
            int outcome = -1;
            if (r == st.codes.A_AUTOBAUD) {
                // A core that already runs took the init byte to find the
                // rate again: no image is sent.
                Text2Buffer(st, "\r\n*Autobauding Vortelm detected");
                t.port.setReceiveThreshold(0);
                outcome = t.port.SSReceive(st.TIMEOUT) == st.codes.A_APPLICATION_STARTED ? 0 : -1;
                t.port.setReceiveThreshold(1);
            } else {
                (void)boot.Loader_new();
                (void)boot.Vortelm_new();
                outcome = boot.Receive_ID_VortACK();
            }
            if (outcome == 0) {
                Text2Buffer(st, "\r\n*Vortelm successfully launched");
                st.ConnectionState = kConnectedAndReady;
                if (ReadResetConfiguration(t) == 0) ShowResetConfiguration(t);
                InitializeTarget(t);
                st.ConnectionState = kConnectedAndReady;
                RefreshAfterOperation(st);
                result = 0;
            }
        }
        // A connect always leaves an empty list: the kernel images'
        // selections go.
        st.selections.count = 0;
    } catch (const RunTimeError& e) {
        Text2Buffer(st, std::string("\r\n*ERROR: ") + e.what());
        st.host->messageBox(kCaution, MsgButtons::Ok, MsgIcon::None);
    }
    st.host->setBusy(false);
    EnableConnectionCheck(t);
    return result;
}

int reconnect(Target& t) {
    ProgramState& st = t.st;
    try {
        if (!t.port.isOpen()) (void)t.port.open();
    } catch (const RunTimeError&) {
        st.host->messageBox(kCaution, MsgButtons::Ok, MsgIcon::None);
    }
    ClearDriverLoaded(st);
    link::Monitor mon(st, t.port);
    if (mon.Cmd_reconnect() == 0) {
        Text2Buffer(st, "\r\n*Monitor ready");
        st.ConnectionState = kConnectedAndReady;
        st.host->refreshStatus();
        return 0;
    }
    Text2Buffer(st, "\r\n*ERROR: Monitor not ready");
    st.ConnectionState = kNotConnected;
    st.host->refreshStatus();
    return -1;
}

int disconnect(Target& t) {
    if (t.port.isOpen()) {
        t.port.close();
        t.st.ConnectionState = kNotConnected;
        t.st.host->refreshStatus();
        Text2Buffer(t.st, "\r\n*disconnect: vortelm disconnected - comm port available");
    }
    return 0;
}

void CheckConnection(Target& t) {
    ProgramState& st = t.st;
    const int16_t semaphore = t.port.ComSemaphore;
    if (st.ConnectionState != kConnectedAndReady || semaphore == 2 || st.CHECKCONNECTION == 0)
        return;
    // A foreground command that has just taken the line (semaphore 3) makes
    // the test give up at once through TestAbort.
    link::Monitor mon(st, t.port);
    bool gaveWay = false;
    const int16_t r = mon.Cmd_testconnection(&gaveWay);
    // A test that gave way to a foreground command says nothing of the line.
    if (r != 0 && !gaveWay) {
        Text2Buffer(st, "Connection to target lost !");
        st.ConnectionState = kNotConnected;
        st.host->refreshStatus();
    }
}

}  // namespace vortelm::target
