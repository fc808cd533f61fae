#include "link/ComSettings.h"

#include <algorithm>
#include <climits>

#include "config/Kernels.h"
#include "core/Host.h"
#include "core/ProgramState.h"
#include "link/ComPort.h"
#include "link/Ports.h"

namespace vortelm::link {

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

void initialize(ComPort& port, ComSettingsForm& form) {
    ProgramState& st = port.state();
    port.portList.clear();
    port.AddComports(1, st.COMPORTS);
    form.portItems = port.portList;
    form.comPortCount = int(form.portItems.size());
    for (const PortInfo& p : ListPorts()) form.portItems.push_back(p.path);
    form.baudItems.clear();
    for (int32_t rate : kBaudRates) form.baudItems.push_back(std::to_string(rate));
    form.parityItems = {"none", "odd", "even"};
    form.dataItems = {"7 Bit", "8 Bit"};
    form.stopItems = {"1", "2"};
}

void ShowSettings(const ProgramState& st, ComSettingsForm& form) {
    form.DPortNumber = -1;
    const std::string name = st.PORTNAME;
    if (name.empty()) {
        if (st.PORT >= 1 && st.PORT <= form.comPortCount) form.DPortNumber = st.PORT - 1;
    } else {
        for (std::size_t i = std::size_t(form.comPortCount); i < form.portItems.size(); ++i)
            if (form.portItems[i] == name) form.DPortNumber = int(i);
    }
    form.DBaudrate = -1;
    for (int i = 0; i < int(std::size(kBaudRates)); ++i)
        if (kBaudRates[i] == st.BAUDRATE) form.DBaudrate = i;
    form.DParity = st.PARITY;
    form.DData = st.DATA - 7;
    form.DStopbits = st.STOPBITS - 1;
    form.CKline = st.KLINE == 1;
    form.CCheckConnection = st.CHECKCONNECTION == 1;
    form.TTimeout = std::to_string(st.TIMEOUT);
    form.TConnectTimeout = std::to_string(st.CONNECTTIMEOUT);
    form.TConnectRetry = std::to_string(st.CONNECTRETRY);
}

void DPortNumber_Click(ProgramState& st, ComSettingsForm& form, int index) {
    form.DPortNumber = index;
    if (index < 0 || index >= int(form.portItems.size())) return;
    if (index < form.comPortCount) {
        st.PORT = int16_t(index + 1);
        st.PORTNAME.clear();
    } else {
        st.PORTNAME = form.portItems[std::size_t(index)];
    }
}

void DBaudrate_Click(ProgramState& st, ComSettingsForm& form, int index) {
    form.DBaudrate = index;
    if (index >= 0 && index < int(std::size(kBaudRates))) st.BAUDRATE = kBaudRates[index];
}

void DParity_Click(ProgramState& st, ComSettingsForm& form, int index) {
    form.DParity = index;
    st.PARITY = int16_t(index);
}

void DData_Click(ProgramState& st, ComSettingsForm& form, int index) {
    form.DData = index;
    st.DATA = int16_t(index + 7);
}

void DStopbits_Click(ProgramState& st, ComSettingsForm& form, int index) {
    form.DStopbits = index;
    st.STOPBITS = int16_t(index + 1);
}

void CKline_Click(ProgramState& st, ComSettingsForm& form, bool checked) {
    form.CKline = checked;
    st.KLINE = checked ? 1 : 0;
    if (!form.visible) return;
    if (st.host->messageBox("Do you want to activate the default kernel for this setting ?",
                            MsgButtons::YesNo, MsgIcon::Question) == MsgAnswer::Yes)
        SelectDefaultKernel(st);
}

void CCheckConnection_Click(ProgramState& st, ComSettingsForm& form, bool checked) {
    form.CCheckConnection = checked;
    st.CHECKCONNECTION = checked ? 1 : 0;
}

void BOk_Click(ComPort& port, ComSettingsForm& form) {
    ProgramState& st = port.state();
    if (port.isOpen()) port.close();
    // The port number was stored by the list; the three numbers come now.
    st.TIMEOUT = WholeNumber(form.TTimeout);
    st.CONNECTTIMEOUT = WholeNumber(form.TConnectTimeout);
    st.CONNECTRETRY = WholeNumber(form.TConnectRetry);
    if (st.ConnectionState != kConnectedAndReady) {
        if (port.isOpen()) port.close();
        port.setSettingsText(port.CSettings());
        (void)port.open();
    } else {
        if (!port.isOpen()) (void)port.open();
        // The target follows the new rate, then the host.
        if (form.changeBaudrate) form.changeBaudrate(st.BAUDRATE);
    }
    if (!port.isOpen()) (void)port.open();
    st.host->refreshStatus();
    form.visible = false;
}

void BCancel_Click(ComPort& port, ComSettingsForm& form) {
    if (!port.isOpen()) (void)port.open();
    form.visible = false;
}

}  // namespace vortelm::link
