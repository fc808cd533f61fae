#include "link/BaudRate.h"

#include <cmath>
#include <string>

#include "config/Kernels.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/Text.h"
#include "link/ComPort.h"
#include "link/DumpIo.h"
#include "link/Monitor.h"
#include "sfr/SfrTable.h"

namespace vortelm::link {

namespace {

// Conversion to the nearest whole number, half to even; 0 when out of range.
int32_t Round(double value) {
    return RoundToInt32(value).value_or(0);
}

// (real - rate) / rate in percent, computed so that a deviation of exactly
// 2 or 3 % comes out as exactly 2.0 or 3.0 and meets the limits as such.
double Deviation(int32_t real, int32_t rate) {
    return (static_cast<double>(real) - rate) * 100.0 / rate;
}

int32_t DumpWord(ProgramState& st, int32_t address) {
    return dumpio::Read(st.dump, address) + dumpio::Read(st.dump, address + 1) * 256;
}

// The word of a register by name, brought into dump memory first.
int32_t ReadSfr(ProgramState& st, Monitor& mon, const char* name) {
    (void)mon.cmd_readsfr(name);
    const int32_t address = SfrAddressByName(st, name);
    return address < 0 ? 0 : DumpWord(st, address);
}

// Writes the word into the register of that name; an unknown name writes nothing.
void WriteSfr(ProgramState& st, Monitor& mon, const char* name, int32_t value) {
    const int32_t address = SfrAddressByName(st, name);
    if (address >= 0) (void)mon.Cmd_WriteWord(address, value & 0xFFFF);
}

void KeepOldRate(ProgramState& st, int32_t oldRate) {
    st.BAUDRATE = oldRate;
}

}  // namespace

Ald4Divider Ald4BaudDivider(int32_t clk, int32_t s0con, int32_t rate) {
    Ald4Divider d;
    if (rate <= 0) return d;
    const double f = 2 + ((s0con >> 13) & 1);
    d.reload = Round(clk / (f * 16.0 * rate) - 1);
    d.real = Round(clk / ((d.reload + 1.0) * 16.0 * f));
    d.deviation = Deviation(d.real, rate);
    return d;
}

ZtDivider ZtBaudDivider(int32_t clk, int32_t fdv, int32_t rate) {
    ZtDivider d;
    if (rate <= 0) return d;
    d.reload = Round(clk / (rate * 16.0) - 1);
    d.fdv = fdv == 0 ? 511 : fdv;
    do {
        d.fdv += d.fdv < 256 ? 1 : -1;
        d.real = Round(d.fdv / 512.0 * clk / ((d.reload + 1.0) * 16.0));
        d.deviation = Deviation(d.real, rate);
    } while (!(d.deviation < 2.0 || d.fdv < 2 || d.fdv > 510));
    return d;
}

Zt7Divider Zt7BaudDivider(int32_t clk, int32_t fdrl, int32_t brgl, int32_t rate) {
    Zt7Divider d;
    if (rate <= 0) return d;
    const double step = fdrl & 0x3FF;
    const double pctq = (brgl >> 8) & 3;
    const double dctq = (brgl >> 10) & 0x1F;
    d.pdiv = Round(clk / static_cast<double>(rate) / (1024 - step) / (pctq + 1) / (dctq + 1) - 1);
    d.real = Round(clk / (1024 - step) / (d.pdiv + 1.0) / (pctq + 1) / (dctq + 1));
    d.deviation = Deviation(d.real, rate);
    return d;
}

int setBaudrate(ProgramState& st, ComPort& port, int32_t newRate) {
    const std::string settings = port.settingsText();
    const auto oldRate =
        static_cast<int32_t>(LeadingNumberValue(settings.substr(0, settings.find(','))));
    st.BAUDRATE = newRate;
    int result = 0;
    if (st.ConnectionState == 1 && newRate > 0) {
        Monitor mon(st, port);
        switch (st.ControllerFamily) {
            case 0: {
                const int32_t s0con = ReadSfr(st, mon, "S0CON");
                const Ald4Divider d = Ald4BaudDivider(st.CLK, s0con, newRate);
                if (std::fabs(d.deviation) <= 3.0) {
                    WriteSfr(st, mon, "S0BG", d.reload);
                } else {
                    Text2Buffer(
                        st,
                        "*ERROR: Baudrate setting due to CPU frequency setting not possible - "
                        "keeping previous baudrate (" +
                            FormatOneDecimal(d.deviation) + "%)\r\n");
                    KeepOldRate(st, oldRate);
                }
                break;
            }
            case 1: {
                const int32_t fdv = ReadSfr(st, mon, "ASC0FDV");
                const ZtDivider d = ZtBaudDivider(st.CLK, fdv, newRate);
                // a search that found nothing below the limit writes its last divider
                WriteSfr(st, mon, "ASC0FDV", d.fdv);
                WriteSfr(st, mon, "ASC0BG", d.reload);
                break;
            }
            case 2: {
                (void)mon.Cmd_ReadWord(kZt7Fdrl);
                (void)mon.Cmd_ReadWord(kZt7Brgl);
                (void)mon.Cmd_ReadWord(kZt7Brgh);
                const int32_t fdrl = DumpWord(st, kZt7Fdrl);
                const int32_t brgl = DumpWord(st, kZt7Brgl);
                const int32_t brgh = DumpWord(st, kZt7Brgh);
                Text2Buffer(st,
                            "*_setbaudrate: PDIV old value = " + HexText(brgh & 0x3FF, 4) + "\r\n");
                if ((fdrl & ~0x3FFF) != 0x4000) {
                    Text2Buffer(
                        st,
                        "*ERROR: Baudrate change for ZT7: FDRL.DM<>1 - Baudrate not changed\r\n");
                    KeepOldRate(st, oldRate);
                    return -1;
                }
                if ((brgl & 0xDB) != 0) {
                    Text2Buffer(st,
                                "*ERROR: Baudrate change for ZT7: CTQSEL, PPPEN, TMEN, CLKSEL<>0 - "
                                "Baudrate "
                                "not changed\r\n");
                    KeepOldRate(st, oldRate);
                    return -2;
                }
                const Zt7Divider d = Zt7BaudDivider(st.CLK, fdrl, brgl, newRate);
                Text2Buffer(
                    st, "*_setbaudrate: PDIV new value = " + HexText(d.pdiv & 0xFFFF, 4) + "\r\n");
                Text2Buffer(
                    st, "*_setbaudrate: new real baudrate = " + std::to_string(d.real) + "\r\n");
                if (d.deviation > 2.0) {
                    Text2Buffer(
                        st,
                        "*ERROR: Baudrate change for ZT7: accuracy >2% - Baudrate not changed\r\n");
                    KeepOldRate(st, oldRate);
                    return -3;
                }
                (void)mon.Cmd_WriteWord(kZt7Brgh, (brgh & ~0x3FF) | (d.pdiv & 0x3FF));
                break;
            }
            default:
                break;
        }
    }
    // The host follows right after the target's last acknowledge. The new
    // settings go to the open channel, which has the effect of a close and
    // reopen on the line without the reopen's side effects (an adapter's
    // modem lines resetting the board); a closed port opens with them.
    port.setSettingsText(port.CSettings());
    if (!port.isOpen()) (void)port.open();
    st.host->refreshStatus();
    return result;
}

int Asc02Asc1_pre(ProgramState& st, ComPort& port) {
    int result = 0;
    port.setReceiveThreshold(0);
    port.Cmd_P();
    if (st.host->messageBox("Communication from ASC0 to ASC1 !", MsgButtons::OkCancel,
                            MsgIcon::None) != MsgAnswer::Ok) {
        // The semaphore stays taken until the next command gives it back.
        result = -1;
    } else {
        port.clearInput();
        port.SSSend(st.codes.C_ASC1_CON);
        (void)port.SSReceive(st.TIMEOUT);
        if (port.SSReceive(st.TIMEOUT) == -1) {
            Text2Buffer(st, "*ERROR: ASC1 can not be initialized\r\n");
            result = -2;
            port.Cmd_V();
        } else {
            Text2Buffer(st, "*ASC1 initialisation OK \r\n");
            port.clearInput();
        }
    }
    port.setReceiveThreshold(1);
    return result;
}

int Asc02Asc1_ASC1Connection(ProgramState& st, ComPort& port) {
    int result = 0;
    port.setReceiveThreshold(0);
    if (st.host->messageBox("Please change RS232 from ASC0 to ASC1 NOW!", MsgButtons::Ok,
                            MsgIcon::None) != MsgAnswer::Ok) {
        result = -1;
    } else {
        port.clearInput();
        port.SSSend(0x00);
        const int ack = port.SSReceive(st.TIMEOUT);
        const int flag = port.SSReceive(st.TIMEOUT);
        if (ack == -1) {
            Text2Buffer(st, "*ERROR: not ACK with ASC1_TBUF received\r\n");
            result = -2;
        } else {
            Text2Buffer(st, "*ASC1 Ack: " + HexText(ack, 2) + "\r\n");
            if (flag == 0xD5) {
                Text2Buffer(st, "*ASC1 Communication Flag OK \r\n");
            } else {
                Text2Buffer(st, "*ERROR: NO ASC1 Communication Flag \r\n");
                result = -3;
            }
            port.clearInput();
        }
    }
    port.setReceiveThreshold(1);
    port.Cmd_V();
    return result;
}

int switchToAsc1(ProgramState& st, ComPort& port) {
    if (st.ConnectionState != 1) {
        Text2Buffer(st, "\r\n*ERROR: Not Connected to Target");
        st.host->refreshStatus();
        return -100;
    }
    if (!HasFeature(st, "ASC02ASC1", -1)) return -101;
    if (!port.isOpen()) (void)port.open();
    st.host->setBusy(true);
    port.clearInput();
    for (auto& unit : st.memoryUnits) unit.driverLoaded = kFalse;
    int result = 0;
    if (Asc02Asc1_pre(st, port) != 0) {
        result = -1;
    } else if (Asc02Asc1_ASC1Connection(st, port) != 0) {
        Text2Buffer(st, "*VortelmZTA9y communicated with ASC1 failed\r\n");
        result = -2;
    } else {
        Text2Buffer(st, "*VortelmZTA9y communicated with ASC1 \r\n");
        st.host->refreshMemory();
        if (st.REFRESHSFR != 0) st.host->refreshSfrView();
        st.host->refreshStatus();
    }
    st.selections.count = 0;
    st.host->setBusy(false);
    return result;
}

}  // namespace vortelm::link
