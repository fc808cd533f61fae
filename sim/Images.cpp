#include "sim/Images.h"

#include <algorithm>
#include <cstdio>

namespace vortelm::sim {
namespace {

// Code bytes of our images stay within 0x10..0x7F, so that no two of them
// make a word that the loader's relocation patch would take for an address.
std::vector<uint8_t> Filler(std::size_t n, uint32_t seed) {
    std::vector<uint8_t> v(n);
    uint32_t x = seed * 2654435761u + 12345u;
    for (auto& b : v) {
        x = x * 1103515245u + 12345u;
        b = static_cast<uint8_t>(0x10 + ((x >> 16) % 0x70));
    }
    return v;
}

void Put16(std::vector<uint8_t>& v, std::size_t at, uint32_t w) {
    v[at] = static_cast<uint8_t>(w & 0xFF);
    v[at + 1] = static_cast<uint8_t>((w >> 8) & 0xFF);
}

constexpr const char* kAld4Features =
    "RELOCATABLE,WRITEWORD,WRITEBLOCK,READBLOCK,CALL,JMP,EINIT,SWRESET,GETCHECKSUM,TEST,READWORD,"
    "WRITESEQ";
constexpr const char* kZtFeatures =
    "RELOCATABLE,WRITEWORD,WRITEBLOCK,READBLOCK,CALL,JMP,EINIT,SWRESET,GETCHECKSUM,TEST,ASC02ASC1,"
    "READWORD,"
    "WRITESEQ,SETPROTECTION";
constexpr const char* kZt7Features =
    "RELOCATABLE,WRITEWORD,WRITEBLOCK,READBLOCK,CALL,JMP,EINIT,SWRESET,GETCHECKSUM,TEST,READWORD,"
    "WRITESEQ";
constexpr const char* kSmallFeatures =
    "WRITEWORD,WRITEBLOCK,READBLOCK,CALL,JMP,EINIT,GETCHECKSUM,TEST";

}  // namespace

uint16_t FeatureMask(std::string_view names) {
    uint16_t mask = 0;
    while (!names.empty()) {
        const std::size_t comma = names.find(',');
        const std::string_view n = names.substr(0, comma);
        names = comma == std::string_view::npos ? std::string_view{} : names.substr(comma + 1);
        for (std::size_t i = 0; i < kFeatureNames.size(); ++i)
            if (kFeatureNames[i] == n) mask = static_cast<uint16_t>(mask | (1u << i));
    }
    return mask;
}

const std::vector<KernelSpec>& DeliveredKernels() {
    static const std::vector<KernelSpec> kernels = {
        {"ALD4_DEFAULT", "KERNEL/ALD4LDR.HEX", "KERNEL/ALD4CORE.HEX", true, false, 0x00F600,
         0x00F8FF, kAld4Features},
        {"ALD4_KLINE", "KERNEL/ALD4LDRK.HEX", "KERNEL/ALD4CORE.HEX", true, true, 0x00F600, 0x00F8FF,
         kAld4Features},
        {"ZTA9Y_DEFAULT", "KERNEL/ZTA9YLDR.HEX", "KERNEL/ZTA9YCOR.HEX", true, false, 0x00E000,
         0x00E2FF, kZtFeatures},
        {"ZTA9Y_KLINE", "KERNEL/ZTA9YLDK.HEX", "KERNEL/ZTA9YCOR.HEX", true, true, 0x00E000,
         0x00E2FF, kZtFeatures},
        {"ZT7000_DEFAULT", "KERNEL/ZT7LDR.HEX", "KERNEL/ZT7CORE.HEX", true, false, 0x00C000,
         0x00C2FF, kZt7Features},
        {"ZT7000_KLINE", "KERNEL/ZT7LDRK.HEX", "KERNEL/ZT7CORE.HEX", true, true, 0x00C000, 0x00C2FF,
         kZt7Features},
        {"ALD4_SMALL", "KERNEL/ALD4SLDR.HEX", "KERNEL/ALD4SCOR.HEX", false, false, 0x00F600,
         0x00F7FF, kSmallFeatures},
    };
    return kernels;
}

std::vector<uint8_t> MakeLoader(uint32_t first, uint32_t last, bool ack, bool kline) {
    std::vector<uint8_t> v = Filler(kLoaderSize, first ^ (kline ? 0x55u : 0u) ^ (ack ? 0u : 0xAAu));
    v[0] = 'V';
    v[1] = 't';
    v[2] = 'L';
    v[3] = 'd';
    Put16(v, 4, kline ? first - 1 : first);
    Put16(v, 6, last);
    v[8] =
        static_cast<uint8_t>((ack ? kLoaderFlagAck : 0) | (kline ? kLoaderFlagFirstMinusOne : 0));
    return v;
}

std::vector<uint8_t> MakeCore(uint16_t featureMask, std::size_t length, uint32_t seed) {
    std::vector<uint8_t> v = Filler(length, seed);
    v[0] = 0x0D;  // jump over the header
    v[1] = static_cast<uint8_t>((kCoreHeaderSize - 2) / 2);
    v[2] = 'V';
    v[3] = 't';
    v[4] = 'C';
    v[5] = 'r';
    Put16(v, 6, featureMask);
    Put16(v, 8, static_cast<uint32_t>(length));
    Put16(v, 10, 0x0100);  // version 1.0
    return v;
}

std::vector<uint8_t> MakeDriver(const DriverSpec& s, std::size_t length) {
    std::vector<uint8_t> v = Filler(length, 0xD0u + s.unit * 7u + s.generation);
    v[0] = 'V';
    v[1] = 't';
    v[2] = 'D';
    v[3] = 'r';
    v[4] = s.generation;
    v[5] = s.unit;
    Put16(v, 6, s.burst);
    v[8] = s.blank;
    v[9] = s.statusWords;
    Put16(v, 10, s.bufferAddress & 0xFFFF);
    Put16(v, 12, s.bufferAddress >> 16);
    Put16(v, 14, s.wordline & 0xFFFF);
    Put16(v, 16, s.wordline >> 16);
    return v;
}

std::vector<uint8_t> MakeHelper(char which, std::size_t length) {
    std::vector<uint8_t> v = Filler(length, static_cast<uint32_t>(which));
    v[0] = 'V';
    v[1] = 't';
    v[2] = 'H';
    v[3] = 'p';
    v[4] = static_cast<uint8_t>(which);
    return v;
}

std::vector<Image> DeliveredImages() {
    std::vector<Image> out;
    for (const auto& k : DeliveredKernels()) {
        out.push_back(
            {k.loaderFile, kBootstrapAddress, MakeLoader(k.start, k.end, k.loaderAck, k.kline)});
        bool seen = false;
        for (const auto& i : out) seen = seen || i.file == k.coreFile;
        if (!seen)
            out.push_back({k.coreFile, k.start,
                           MakeCore(FeatureMask(k.features), k.end - k.start + 1, k.start)});
    }
    out.push_back(
        {"DRIVER/ALD4IFL1.HEX", 0x00F900, MakeDriver({1, 0, 0x80, 0xFF, 1, 0x00FC80, 0}, 0x100)});
    out.push_back({"DRIVER/ALD4XFL0.HEX", 0x00F900,
                   MakeDriver({0, 1, 0x80, 0xFF, 2, 0x00FC80, 0x100}, 0x100)});
    out.push_back(
        {"DRIVER/ZTIFL0.HEX", 0x00E400, MakeDriver({0, 0, 0x80, 0xFF, 2, 0x00FC80, 0x200}, 0x100)});
    out.push_back(
        {"DRIVER/ZT7IFL1.HEX", 0x00C400, MakeDriver({1, 0, 0x80, 0x00, 1, 0x00D000, 0}, 0x100)});
    out.push_back({"ZTPROG/PLLCON.HEX", 0x00EC00, MakeHelper('P', 0x40)});
    out.push_back({"MCPROG/RSTCON.HEX", 0x00FD00, MakeHelper('R', 0x40)});
    std::vector<uint8_t> sample(0x100);
    for (std::size_t i = 0; i < sample.size(); ++i) sample[i] = static_cast<uint8_t>(i * 7 + 3);
    out.push_back({"SCRIPTS/SAMPLE.HEX", 0x100000, sample});
    return out;
}

std::string ToIntelHex(uint32_t address, const std::vector<uint8_t>& bytes) {
    std::string s;
    char line[80];
    auto record = [&](uint8_t type, uint16_t offset, const uint8_t* data, std::size_t n) {
        unsigned sum = static_cast<unsigned>(n) + (offset >> 8) + (offset & 0xFF) + type;
        int k = std::snprintf(line, sizeof line, ":%02X%04X%02X", static_cast<unsigned>(n), offset,
                              type);
        for (std::size_t i = 0; i < n; ++i) {
            sum += data[i];
            k +=
                std::snprintf(line + k, sizeof line - static_cast<std::size_t>(k), "%02X", data[i]);
        }
        std::snprintf(line + k, sizeof line - static_cast<std::size_t>(k), "%02X\r\n",
                      (0x100 - (sum & 0xFF)) & 0xFF);
        s += line;
    };
    uint32_t upper = 0xFFFFFFFF;
    for (std::size_t i = 0; i < bytes.size();) {
        const uint32_t a = address + static_cast<uint32_t>(i);
        if ((a >> 16) != upper && !(upper == 0xFFFFFFFF && (a >> 16) == 0)) {
            upper = a >> 16;
            const uint8_t ext[2] = {static_cast<uint8_t>(upper >> 8),
                                    static_cast<uint8_t>(upper & 0xFF)};
            record(0x04, 0, ext, 2);
        } else if (upper == 0xFFFFFFFF) {
            upper = 0;
        }
        std::size_t n = std::min<std::size_t>(16, bytes.size() - i);
        n = std::min<std::size_t>(n, 0x10000 - (a & 0xFFFF));
        record(0x00, static_cast<uint16_t>(a & 0xFFFF), bytes.data() + i, n);
        i += n;
    }
    record(0x01, 0, nullptr, 0);
    return s;
}

}  // namespace vortelm::sim
