#pragma once
// The serial settings dialog ("Interface Settings"), without Qt: its lists,
// what each control stores when the operator changes it, OK and Cancel. The
// Qt class ui::FComPort draws these fields and forwards each event here.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vortelm::link {
class ComPort;
}

namespace vortelm::forms {

// The rates of the baud rate list, by list index.
inline constexpr int32_t kBaudRates[] = {300,   600,   1200,  2400,  4800,  9600,
                                         19200, 28800, 38400, 57600, 115200};

class FComPort {
  public:
    // Fills the lists and shows the stored settings.
    explicit FComPort(link::ComPort& port);

    // ---- the controls as values
    // DPortNumber: "COM1" ... "COM<COMPORTS>", then the devices of the system
    // and "sim:". An index below comPortCount is a COM number (index + 1);
    // the others name a device.
    std::vector<std::string> portItems;
    // What the list shows for each entry: the COM names, and for a device
    // its path with what is known about it (one enumeration for both lists).
    std::vector<std::string> portLines;
    int comPortCount = 0;
    int DPortNumber = -1;
    std::vector<std::string> baudItems;
    int DBaudrate = -1;
    std::vector<std::string> parityItems;
    int DParity = 0;
    std::vector<std::string> dataItems;
    int DData = 1;
    std::vector<std::string> stopItems;
    int DStopbits = 0;
    bool CKline = false;
    bool CCheckConnection = true;
    std::string TTimeout;
    std::string TConnectTimeout;
    std::string TConnectRetry;
    // The dialog is on screen (the K-Line question is asked only then).
    bool visible = false;
    // The baud rate change on a live connection: called by BOk with the
    // stored rate while connected (tests may put their own).
    std::function<void(int32_t)> changeBaudrate;

    // Fills the lists: ports from COM1 to COM<COMPORTS> and the system's
    // devices, the rates, "none"/"odd"/"even", "7 Bit"/"8 Bit", "1"/"2".
    void initialize();
    // Puts the stored settings into the controls.
    void ShowSettings();

    // What each control stores when the operator changes it.
    void DPortNumber_Click(int index);
    void DBaudrate_Click(int index);
    void DParity_Click(int index);
    void DData_Click(int index);
    void DStopbits_Click(int index);
    // Stores K-Line; while the dialog is shown asks whether to take the
    // default kernel for the new state and selects it on Yes.
    void CKline_Click(bool checked);
    void CCheckConnection_Click(bool checked);

    // OK: takes the three numbers, reopens the port with the new settings
    // (or leaves the rate to the baud rate change while connected), refreshes
    // the status. Cancel: reopens a closed port.
    void BOk_Click();
    void BCancel_Click();

    [[nodiscard]] link::ComPort& port() { return port_; }

  private:
    link::ComPort& port_;
};

// A text box read as a whole number: leading blanks, a sign and the digits
// that follow; 0 when there are none.
[[nodiscard]] int32_t WholeNumber(std::string_view text);

}  // namespace vortelm::forms
