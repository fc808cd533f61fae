// Times the decoder over 1 MiB of code: random bytes, the sample image
// repeated, and a code-like stream of common instructions. Each is listed
// twice: the decoder alone over the bytes (one text per instruction, stepping
// by the table's length, two bytes past an illegal one), and the assembler
// view's rows over the dump memory (bytes, text, Defined marks). Prints the
// median of seven runs in wall and processor time, and lines per second.
// Goal: 1 MiB in at most 50 ms. There is no peer for this instruction set.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "disasm/CommandTable.h"
#include "disasm/Decoder.h"
#include "image/Dump.h"
#include "sfr/SfrTable.h"
#include "shell/Disassembly.h"
#include "shell/ViewListing.h"

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr size_t kSize = 1 << 20;
constexpr int32_t kBase = 0x100000;

double CpuMs() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) / 1e6;
}

std::string ReadAll(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// The data bytes of an Intel HEX text, in file order.
std::vector<uint8_t> HexBytes(const std::string& text) {
    std::vector<uint8_t> out;
    std::stringstream s(text);
    std::string line;
    while (std::getline(s, line)) {
        if (line.size() < 11 || line[0] != ':' || line.substr(7, 2) != "00") continue;
        const int n = std::stoi(line.substr(1, 2), nullptr, 16);
        for (int i = 0; i < n; ++i)
            out.push_back(static_cast<uint8_t>(std::stoi(line.substr(9 + 2 * i, 2), nullptr, 16)));
    }
    return out;
}

std::vector<uint8_t> Random() {
    std::vector<uint8_t> v(kSize);
    std::mt19937 rng(7);
    for (auto& b : v) b = static_cast<uint8_t>(rng());
    return v;
}

std::vector<uint8_t> Repeated(const std::vector<uint8_t>& sample) {
    std::vector<uint8_t> v(kSize);
    for (size_t i = 0; i < kSize; ++i) v[i] = sample[i % sample.size()];
    return v;
}

// Moves, arithmetic with registers and memory, bit tests, jumps and calls.
std::vector<uint8_t> CodeLike() {
    const std::vector<std::vector<uint8_t>> pieces{
        {0xE6, 0xF0, 0x34, 0x12},
        {0xF2, 0xF1, 0x12, 0xFF},
        {0xF6, 0xF0, 0x10, 0xFF},
        {0x00, 0x12},
        {0x02, 0xF3, 0x00, 0x40},
        {0x48, 0x57},
        {0x8A, 0x88, 0x05, 0x10},
        {0x3D, 0x04},
        {0xDA, 0x00, 0x00, 0x20},
        {0x0F, 0x88},
        {0xA8, 0x12},
        {0xD4, 0x12, 0x34, 0x12},
        {0xCC, 0x00},
        {0xEC, 0xF3},
        {0xFC, 0xF3},
        {0xCB, 0x00},
    };
    std::vector<uint8_t> v;
    std::mt19937 rng(11);
    while (v.size() < kSize) {
        const auto& p = pieces[rng() % pieces.size()];
        v.insert(v.end(), p.begin(), p.end());
    }
    v.resize(kSize);
    return v;
}

struct Result {
    double wallMs = 0;
    double cpuMs = 0;
    long lines = 0;
};

template <class Work>
Result Median(Work work) {
    std::vector<Result> runs;
    for (int i = 0; i < 7; ++i) {
        const auto t0 = Clock::now();
        const double c0 = CpuMs();
        Result r;
        r.lines = work();
        r.cpuMs = CpuMs() - c0;
        r.wallMs = std::chrono::duration<double, std::milli>(Clock::now() - t0).count();
        runs.push_back(r);
    }
    std::sort(runs.begin(), runs.end(),
              [](const Result& a, const Result& b) { return a.wallMs < b.wallMs; });
    return runs[runs.size() / 2];
}

long DecodeBytes(vortelm::ProgramState& st, const std::vector<uint8_t>& code) {
    vortelm::disasm::ResetSequenceCounters(st.instructions);
    const auto bytes = [&code](int32_t a) -> uint8_t {
        return a >= 0 && static_cast<size_t>(a) < code.size() ? code[static_cast<size_t>(a)] : 0;
    };
    long lines = 0;
    size_t sum = 0;
    for (int32_t a = 0; static_cast<size_t>(a) < code.size();) {
        const std::string text = vortelm::disasm::Disassemble(st, st.instructions, a, bytes);
        sum += text.size();
        ++lines;
        const int16_t n =
            vortelm::disasm::InstructionLength(st.instructions, code[static_cast<size_t>(a)]);
        a += vortelm::disasm::IsIllegalText(text) || n <= 0 ? 2 : n;
    }
    if (sum == 0) std::puts("");
    return lines;
}

long ViewRows(vortelm::ProgramState& st) {
    vortelm::disasm::ResetSequenceCounters(st.instructions);
    // An illegal text ends a selection, as in _viewassembler; the listing
    // goes on with a selection from two bytes behind it, to the end.
    long lines = 0;
    const int32_t end = kBase + static_cast<int32_t>(kSize) - 1;
    for (int32_t from = kBase; from <= end;) {
        st.selections.count = 1;
        st.selections.start[0] = from;
        st.selections.end[0] = end;
        const auto rows = vortelm::shell::ListingRows(st, vortelm::shell::ListingMode::Assembler,
                                                      vortelm::shell::InstructionDecoder());
        lines += static_cast<long>(rows.size()) - 1;
        if (rows.size() < 2) break;
        from = vortelm::HexValue(std::string_view(rows[rows.size() - 2]).substr(0, 6)) + 2;
    }
    return lines;
}

}  // namespace

int main() {
    const fs::path data = fs::path(VORTELM_SOURCE_DATA_DIR);
    const fs::path dir =
        fs::temp_directory_path() / ("vortelm-bench-disasm-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    fs::copy_file(data / "SFRDEF" / "LD7RK.SFR", dir / "LD7RK.SFR",
                  fs::copy_options::overwrite_existing);

    vortelm::ProgramState st;
    if (!vortelm::disasm::ParseCommandTable(ReadAll(data / "CMDDEF" / "command.cmd"),
                                            st.instructions)
             .ok()) {
        std::fprintf(stderr, "bench_disasm: the instruction table does not read\n");
        return 1;
    }
    if (vortelm::ReadSfrFile(st, (dir / "LD7RK.SFR").string()) != 0) {
        std::fprintf(stderr, "bench_disasm: the register file does not read\n");
        return 1;
    }
    const std::vector<uint8_t> sample = HexBytes(ReadAll(data / "SCRIPTS" / "SAMPLE.HEX"));
    if (sample.empty()) {
        std::fprintf(stderr, "bench_disasm: the sample image is empty\n");
        return 1;
    }

    std::printf("1 MiB of code, %d registers, median of 7 runs\n", st.sfrCount);
    std::printf("%-22s %-10s %10s %10s %10s %14s\n", "input", "listing", "wall ms", "cpu ms",
                "lines", "lines/s");
    const struct {
        const char* name;
        std::vector<uint8_t> bytes;
    } inputs[] = {{"random", Random()},
                  {"sample image repeated", Repeated(sample)},
                  {"code-like", CodeLike()}};
    bool decoderGoal = true;
    bool viewGoal = true;
    for (const auto& in : inputs) {
        vortelm::WriteDumpBlock(st.dump, kBase, in.bytes, vortelm::kMarksLoaded);
        const Result d = Median([&]() { return DecodeBytes(st, in.bytes); });
        const Result v = Median([&]() { return ViewRows(st); });
        auto print = [&in](const char* kind, const Result& r) {
            std::printf("%-22s %-10s %10.1f %10.1f %10ld %14.0f\n", in.name, kind, r.wallMs,
                        r.cpuMs, r.lines, static_cast<double>(r.lines) / (r.wallMs / 1e3));
        };
        print("decoder", d);
        print("view rows", v);
        decoderGoal = decoderGoal && d.cpuMs <= 50.0;
        viewGoal = viewGoal && v.cpuMs <= 50.0;
    }
    std::printf("goal, 1 MiB in at most 50 ms processor time: decoder %s, view rows %s\n",
                decoderGoal ? "met" : "NOT met", viewGoal ? "met" : "NOT met");
    fs::remove_all(dir);
    return 0;
}
