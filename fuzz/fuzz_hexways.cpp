// Fuzz target: the Intel HEX reader's fast ways (two halves at once, plain
// records decoded the short way) against the plain line-by-line way on the
// same bytes. Both must leave the same text, selections, image and error.

#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz/FuzzFile.h"

namespace {

struct Outcome {
    std::string error;
};

Outcome Read(vortelm::ProgramState& st, const std::string& file, const vortelm::HexReading& how) {
    // A fresh text for each input: a long one is cut at its front.
    st.terminalBuffer.clear();
    st.terminalLines = 0;
    vortelm::InitDumpMemory(st.dump);
    try {
        vortelm::ReadHexFile(st, file, how);
    } catch (const vortelm::RunTimeError& e) {
        return {e.what()};
    }
    return {};
}

void Same(vortelm::ProgramState& a, vortelm::ProgramState& b) {
    if (a.terminalBuffer.str() != b.terminalBuffer.str()) std::abort();
    const auto& sa = a.selections;
    const auto& sb = b.selections;
    if (sa.count != sb.count) std::abort();
    for (int i = 0; i < sa.count; ++i)
        if (sa.start[i] != sb.start[i] || sa.end[i] != sb.end[i]) std::abort();
    std::vector<uint8_t> va(65536), vb(65536), ta(65536), tb(65536);
    for (int s = 0; s < vortelm::DumpMemory::kSegments; ++s) {
        const bool inA = vortelm::IsSegmentAllocated(a.dump, s);
        const bool inB = vortelm::IsSegmentAllocated(b.dump, s);
        if (!inA && !inB) continue;
        vortelm::ReadDumpBlock(a.dump, s * 65536, va, ta);
        vortelm::ReadDumpBlock(b.dump, s * 65536, vb, tb);
        if (va != vb || ta != tb) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static vortelm::fuzz::Harness h;
    static auto other = [] {
        auto st = std::make_unique<vortelm::ProgramState>();
        st->programFolder = h.dir;
        st->PATH_LOAD = h.dir;
        return st;
    }();
    h.write(data, size);
    const Outcome fast = Read(*h.st, h.input, {0, true});
    const Outcome plain = Read(*other, h.input, {SIZE_MAX, false});
    if (fast.error != plain.error) std::abort();
    Same(*h.st, *other);
    return 0;
}
