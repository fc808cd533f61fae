#pragma once
// The print form: a printer from the system's list, one of three styles, and
// the lines that OK sends to the printer (the front end owns the printer).

#include <string>
#include <vector>

#include "shell/ViewListing.h"

namespace vortelm {
struct ProgramState;
}

namespace vortelm::forms {

enum class PrintStyle { Text, Hex, Assembler };

constexpr const char* kPrintHead = "               00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F";
constexpr const char* kPrintStars =
    "*******************************************************************";
// The printer's font; the front end falls back to a fixed-width font.
constexpr const char* kPrintFont = "Courier New";

// The lines of a print job of the selections in a style: two empty lines,
// then per selection its rows, an empty line, 67 stars and an empty line.
// The assembler style needs a decoder; without one it lists nothing but the
// frame of each selection.
[[nodiscard]] std::vector<std::string> PrintLines(ProgramState& st, PrintStyle style,
                                                  const shell::DecodeAt& decode = {});

class FPrint {
  public:
    FPrint(ProgramState& st, shell::DecodeAt decode) : st_(st), decode_(std::move(decode)) {}

    // Form_Load: the printers of the system fill DPrinterlist.
    void Form_Load(std::vector<std::string> printers);

    [[nodiscard]] const std::vector<std::string>& printers() const { return printers_; }
    [[nodiscard]] int printer() const { return printer_; }
    void setPrinter(int index);

    [[nodiscard]] PrintStyle style() const { return style_; }
    void setStyle(PrintStyle style) { style_ = style; }
    // The assembler option needs the instruction decoder.
    [[nodiscard]] bool assemblerEnabled() const { return static_cast<bool>(decode_); }

    // BOk: the lines to print (the form then hides).
    [[nodiscard]] std::vector<std::string> BOk();

  private:
    ProgramState& st_;
    shell::DecodeAt decode_;
    std::vector<std::string> printers_;
    int printer_ = -1;
    PrintStyle style_ = PrintStyle::Hex;
};

}  // namespace vortelm::forms
