#include "forms/FComPort.h"

#include <algorithm>
#include <climits>

#include "config/Kernels.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "link/BaudRate.h"
#include "link/ComPort.h"
#include "link/Ports.h"

namespace vortelm::forms {

int32_t WholeNumber(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
    int64_t v = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
        v = std::min<int64_t>(v * 10 + (text[i] - '0'), int64_t(INT32_MAX) + 1);
    if (negative) v = -v;
    return int32_t(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX));
}

FComPort::FComPort(link::ComPort& port) : port_(port) {
    // OK while connected: the target takes the new rate first, then the host.
    changeBaudrate = [this](int32_t rate) { (void)link::setBaudrate(port_.state(), port_, rate); };
    initialize();
    ShowSettings();
}

void FComPort::initialize() {
    ProgramState& st = port_.state();
    port_.portList.clear();
    port_.AddComports(1, st.COMPORTS);
    portItems = port_.portList;
    comPortCount = int(portItems.size());
    portLines = portItems;
    for (const link::PortInfo& p : link::ListPorts()) {
        portItems.push_back(p.path);
        portLines.push_back(p.path.rfind("sim:", 0) == 0 ? "sim:  (the virtual board)"
                                                         : link::PortLine(p));
    }
    baudItems.clear();
    for (int32_t rate : kBaudRates) baudItems.push_back(std::to_string(rate));
    parityItems = {"none", "odd", "even"};
    dataItems = {"7 Bit", "8 Bit"};
    stopItems = {"1", "2"};
}

void FComPort::ShowSettings() {
    const ProgramState& st = port_.state();
    DPortNumber = -1;
    const std::string name = st.PORTNAME;
    if (name.empty()) {
        if (st.PORT >= 1 && st.PORT <= comPortCount) DPortNumber = st.PORT - 1;
    } else {
        for (std::size_t i = std::size_t(comPortCount); i < portItems.size(); ++i)
            if (portItems[i] == name) DPortNumber = int(i);
    }
    DBaudrate = -1;
    for (int i = 0; i < int(std::size(kBaudRates)); ++i)
        if (kBaudRates[i] == st.BAUDRATE) DBaudrate = i;
    DParity = st.PARITY;
    DData = st.DATA - 7;
    DStopbits = st.STOPBITS - 1;
    CKline = st.KLINE == 1;
    CCheckConnection = st.CHECKCONNECTION == 1;
    TTimeout = std::to_string(st.TIMEOUT);
    TConnectTimeout = std::to_string(st.CONNECTTIMEOUT);
    TConnectRetry = std::to_string(st.CONNECTRETRY);
}

void FComPort::DPortNumber_Click(int index) {
    ProgramState& st = port_.state();
    DPortNumber = index;
    if (index < 0 || index >= int(portItems.size())) return;
    if (index < comPortCount) {
        st.PORT = int16_t(index + 1);
        st.PORTNAME.clear();
    } else {
        st.PORTNAME = portItems[std::size_t(index)];
    }
}

void FComPort::DBaudrate_Click(int index) {
    DBaudrate = index;
    if (index >= 0 && index < int(std::size(kBaudRates)))
        port_.state().BAUDRATE = kBaudRates[index];
}

void FComPort::DParity_Click(int index) {
    DParity = index;
    port_.state().PARITY = int16_t(index);
}

void FComPort::DData_Click(int index) {
    DData = index;
    port_.state().DATA = int16_t(index + 7);
}

void FComPort::DStopbits_Click(int index) {
    DStopbits = index;
    port_.state().STOPBITS = int16_t(index + 1);
}

void FComPort::CKline_Click(bool checked) {
    ProgramState& st = port_.state();
    CKline = checked;
    st.KLINE = checked ? 1 : 0;
    if (!visible) return;
    if (st.host->messageBox("Do you want to activate the default kernel for this setting ?",
                            MsgButtons::YesNo, MsgIcon::Question) == MsgAnswer::Yes)
        SelectDefaultKernel(st);
}

void FComPort::CCheckConnection_Click(bool checked) {
    CCheckConnection = checked;
    port_.state().CHECKCONNECTION = checked ? 1 : 0;
}

void FComPort::BOk_Click() {
    ProgramState& st = port_.state();
    if (port_.isOpen()) port_.close();
    // The port number was stored by the list; the three numbers come now.
    st.TIMEOUT = WholeNumber(TTimeout);
    st.CONNECTTIMEOUT = WholeNumber(TConnectTimeout);
    st.CONNECTRETRY = WholeNumber(TConnectRetry);
    if (st.ConnectionState != kConnectedAndReady) {
        if (port_.isOpen()) port_.close();
        port_.setSettingsText(port_.CSettings());
        (void)port_.open();
    } else {
        if (!port_.isOpen()) (void)port_.open();
        // The target follows the new rate, then the host.
        if (changeBaudrate) changeBaudrate(st.BAUDRATE);
    }
    if (!port_.isOpen()) (void)port_.open();
    st.host->refreshStatus();
    visible = false;
}

void FComPort::BCancel_Click() {
    if (!port_.isOpen()) (void)port_.open();
    visible = false;
}

}  // namespace vortelm::forms
