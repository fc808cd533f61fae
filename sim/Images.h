#pragma once
// The target-side images we deliver (loaders, monitor cores, flash drivers,
// register helpers) and the layouts the board reads out of them. The board
// never trusts a kernel record: it looks at the bytes it was sent.
//
// Loader (32 bytes, loaded by the bootstrap loader at kBootstrapAddress):
//   0..3   "VtLd"
//   4..5   first address of the core (low 16 bits); a K-Line loader holds
//          first minus one here, as the relocation patch expects
//   6..7   last address of the core (low 16 bits)
//   8      flags: bit 0 acknowledge with 0x01, bit 1 word 4 is first-1
//   9..31  loader code
// Core (monitor) header, at the core's first address:
//   0..1   jump over the header
//   2..5   "VtCr"
//   6..7   offered commands, one bit per feature (order of kFeatureNames)
//   8..9   length of the core in bytes
// Driver header, at the driver's entry:
//   0..3   "VtDr"
//   4      generation: 1 (driver mode 1) or 0 (driver mode 0)
//   5      flash unit of the board it drives (index into the board's units)
//   6..7   burst size
//   8      blank value
//   9      number of status words
//   10..13 buffer address
//   14..17 wordline (erase) size
// Helper header, at the helper's entry:
//   0..3   "VtHp"
//   4      'P' sets PLLCON from R8, 'R' sets RSTCON from R8

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vortelm::sim {

constexpr uint32_t kBootstrapAddress = 0x00FA40;
constexpr std::size_t kLoaderSize = 32;
constexpr uint8_t kLoaderFlagAck = 0x01;
constexpr uint8_t kLoaderFlagFirstMinusOne = 0x02;
constexpr std::size_t kCoreHeaderSize = 12;
constexpr std::size_t kDriverHeaderSize = 18;

// The monitor's features in the order of their bits in a core header.
inline constexpr std::array<std::string_view, 14> kFeatureNames = {
    "RELOCATABLE", "WRITEWORD", "WRITEBLOCK", "READBLOCK",    "CALL",
    "JMP",         "EINIT",     "SWRESET",    "GETCHECKSUM",  "TEST",
    "ASC02ASC1",   "READWORD",  "WRITESEQ",   "SETPROTECTION"};

[[nodiscard]] uint16_t FeatureMask(std::string_view commaSeparatedNames);

struct Image {
    std::string file;  // path below the data folder, upper case, '/' separated
    uint32_t address = 0;
    std::vector<uint8_t> bytes;
};

// What one kernel of kernel.dat is made of.
struct KernelSpec {
    std::string name;
    std::string loaderFile;
    std::string coreFile;
    bool loaderAck = true;
    bool kline = false;
    uint32_t start = 0;
    uint32_t end = 0;
    std::string features;  // comma separated, as in kernel.dat
};

[[nodiscard]] const std::vector<KernelSpec>& DeliveredKernels();

[[nodiscard]] std::vector<uint8_t> MakeLoader(uint32_t first, uint32_t last, bool ack, bool kline);
[[nodiscard]] std::vector<uint8_t> MakeCore(uint16_t featureMask, std::size_t length,
                                            uint32_t seed);
struct DriverSpec {
    uint8_t generation = 1;
    uint8_t unit = 0;
    uint16_t burst = 128;
    uint8_t blank = 0xFF;
    uint8_t statusWords = 1;
    uint32_t bufferAddress = 0xFC80;
    uint32_t wordline = 0;
};
[[nodiscard]] std::vector<uint8_t> MakeDriver(const DriverSpec& spec, std::size_t length);
[[nodiscard]] std::vector<uint8_t> MakeHelper(char which, std::size_t length);

// Every image file under the data folder, with its load address.
[[nodiscard]] std::vector<Image> DeliveredImages();

// Intel HEX text: 16-byte data records, extended linear address records
// where the upper 16 bits change, end record; lines end in CR LF.
[[nodiscard]] std::string ToIntelHex(uint32_t address, const std::vector<uint8_t>& bytes);

}  // namespace vortelm::sim
