#pragma once
// The shell's listing of the selections: one routine for the view rows
// (_viewbyte, _viewword, _viewlong, _viewassembler, _viewascii), each row
// on a new line of the running text, a row of 39 stars after each selection.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vortelm {
struct ProgramState;
}

namespace vortelm::shell {

enum class ListingMode : int {
    Byte = 0,
    Word = 1,
    Long = 2,
    Assembler = 3,
    Ascii = 4,
    AsciiSwapped = 5,
};

constexpr const char* kListingStars = "***************************************";

// One decoded instruction: its text and its length in bytes.
struct DecodedInstruction {
    std::string text;
    int32_t byteLength = 0;
};

// Decodes the instruction at an address of the memory image (the assembler
// mode needs one; the other modes ignore it).
using DecodeAt = std::function<DecodedInstruction(ProgramState&, int32_t address)>;

// The rows of the listing without line ends, the separator row after each
// selection (the view window's list has a shorter one).
[[nodiscard]] std::vector<std::string> ListingRows(ProgramState& st, ListingMode mode,
                                                   const DecodeAt& decode = {},
                                                   std::string_view separator = kListingStars);

// Writes the rows to the running text, each on a new line.
void ShowListing(ProgramState& st, ListingMode mode, const DecodeAt& decode = {});

}  // namespace vortelm::shell
