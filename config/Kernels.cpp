#include "config/Kernels.h"

#include <algorithm>
#include <string>

#include "config/ConfigText.h"
#include "config/ControllerTypes.h"
#include "core/Helpers.h"
#include "core/ProgramState.h"
#include "core/RunTimeError.h"

namespace vortelm {

namespace {

int ResolveKernelIndex(const ProgramState& st, int index) {
    const int i = index < 0 ? st.CurrentKernel : index;
    CheckBound(i, kKernelBound, "kernel");
    return i;
}

bool StartsWith(std::string_view text, std::string_view key) {
    return text.substr(0, key.size()) == key;
}

}  // namespace

void InitFeatureNames(ProgramState& st) {
    static constexpr const char* kNames[] = {
        "RELOCATABLE", "WRITEWORD", "WRITEBLOCK", "READBLOCK",    "CALL",
        "JMP",         "EINIT",     "SWRESET",    "GETCHECKSUM",  "TEST",
        "ASC02ASC1",   "READWORD",  "WRITESEQ",   "SETPROTECTION"};
    st.featureNameCount = 0;
    for (const char* n : kNames) st.featureNames[st.featureNameCount++] = n;
}

void ReadKernels(ProgramState& st, std::string_view path) {
    auto lines = config::ReadLines(st, path);
    if (!lines) {
        config::ReportMissingFile(st, path);
        return;
    }
    st.kernelCount = 0;
    std::string value;  // a line without "=" keeps the value of the line before
    for (const std::string& raw : *lines) {
        const std::string line = UpperCase(config::RemoveSpaces(raw));
        if (const auto eq = line.find('='); eq != std::string::npos) value = line.substr(eq + 1);
        const auto index = config::ParenthesisedText(line);
        if (!index) continue;  // no kernel named: nothing to store
        const int32_t n = config::Val(*index);
        CheckBound(n, kKernelBound, "kernel");
        if (n >= st.kernelCount) {
            for (int k = st.kernelCount; k <= n; ++k) st.kernels[k] = Kernel{};
            st.kernelCount = static_cast<int16_t>(n + 1);
        }
        Kernel& k = st.kernels[n];
        if (StartsWith(line, "KERNELNAME")) k.name = value;
        if (StartsWith(line, "LOADERPATH")) k.loaderPath = value;
        if (StartsWith(line, "LOADERACK")) k.loaderAck = Flag(value != "FALSE");
        if (StartsWith(line, "VORTELMPATH")) k.monitorPath = value;
        if (StartsWith(line, "FEATURES")) {
            k.featureCount = 0;
            size_t start = 0;
            while (!value.empty()) {
                const auto comma = value.find(',', start);
                CheckBound(k.featureCount, 63, "kernel feature");
                k.features[k.featureCount++] =
                    KernelFeature{value.substr(start, comma == std::string::npos ? std::string::npos
                                                                                 : comma - start),
                                  0, kTrue};
                if (comma == std::string::npos) break;
                start = comma + 1;
            }
        }
        if (StartsWith(line, "STARTADDRESS")) k.startAddress = HexValue(value);
        if (StartsWith(line, "ENDADDRESS")) k.endAddress = HexValue(value);
        if (StartsWith(line, "PATCHSTARTADDRESS")) k.patchStartAddress = HexValue(value);
    }
}

bool WriteKernels(const ProgramState& st, std::string_view path) {
    std::string out;
    for (int i = 0; i < st.kernelCount && i <= kKernelBound; ++i) {
        const Kernel& k = st.kernels[i];
        const std::string n = "(" + std::to_string(i) + ")=";
        out += "KERNELNAME" + n + k.name + "\n";
        out += "LOADERPATH" + n + k.loaderPath + "\n";
        out += "LOADERACK" + n + (k.loaderAck == kTrue ? "TRUE" : "FALSE") + "\n";
        out += "VORTELMPATH" + n + k.monitorPath + "\n";
        out += "FEATURES" + n;
        for (int f = 0; f < k.featureCount && f <= 63; ++f) {
            if (f > 0) out += ",";
            out += k.features[f].name;
        }
        out += "\n";
        out += "STARTADDRESS" + n + HexText(k.startAddress, 6) + "\n";
        out += "ENDADDRESS" + n + HexText(k.endAddress, 6) + "\n";
        out += "PATCHSTARTADDRESS" + n +
               (k.patchStartAddress > 0 ? HexText(k.patchStartAddress, 6) : "") + "\n";
        out += "\n";
    }
    return config::WriteFileAtomically(st, path, out);
}

int KernelIndexByName(const ProgramState& st, std::string_view name) {
    for (int i = 0; i < st.kernelCount && i <= kKernelBound; ++i)
        if (EqualUpper(st.kernels[i].name, name)) return i;
    return -1;
}

int KernelIndexByMonitorPath(const ProgramState& st, std::string_view path) {
    for (int i = 0; i < st.kernelCount && i <= kKernelBound; ++i)
        if (EqualUpper(st.kernels[i].monitorPath, path)) return i;
    return -1;
}

void SelectKernelByName(ProgramState& st, std::string_view name) {
    const int i = KernelIndexByName(st, name);
    if (i >= 0) st.CurrentKernel = static_cast<int16_t>(i);
    CheckBound(st.CurrentKernel, kKernelBound, "kernel");
    st.KernelStartAddress = st.kernels[st.CurrentKernel].startAddress;
    st.KernelEndAddress = st.kernels[st.CurrentKernel].endAddress;
}

void SelectDefaultKernel(ProgramState& st) {
    std::string name;
    if (ControllerIndexByName(st, st.MCTYPE) >= 0) {
        name = DefaultKernelOfController(st, st.MCTYPE, st.KLINE);
    } else {
        const bool kline = st.KLINE == 1;
        switch (st.ControllerFamily) {
            case 1:
                name = kline ? "ZTA9Y_KLINE" : "ZTA9Y_DEFAULT";
                break;
            case 2:
                name = kline ? "ZT7000_KLINE" : "ZT7000_DEFAULT";
                break;
            default:
                name = kline ? "ALD4_KLINE" : "ALD4_DEFAULT";
                break;
        }
    }
    SelectKernelByName(st, name);
}

bool HasFeature(const ProgramState& st, std::string_view feature, int index) {
    const int i = index < 0 ? st.CurrentKernel : index;
    if (i < 0 || i > kKernelBound) return false;
    const Kernel& k = st.kernels[static_cast<size_t>(i)];
    const int n = std::min<int>(k.featureCount, static_cast<int>(k.features.size()));
    for (int f = 0; f < n; ++f)
        if (k.features[static_cast<size_t>(f)].flag == kTrue &&
            k.features[static_cast<size_t>(f)].name == feature)
            return true;
    return false;
}

bool IsDefaultKernel(const ProgramState& st, int index) {
    const std::string& n = st.kernels[ResolveKernelIndex(st, index)].name;
    return n == "ALD4_KLINE" || n == "ALD4_DEFAULT" || n == "ZTA9Y_DEFAULT" || n == "ZTA9Y_KLINE";
}

void AddKernel(ProgramState& st) {
    CheckBound(st.kernelCount, kKernelBound, "kernel");
    Kernel& k = st.kernels[st.kernelCount];
    k.name.clear();
    k.loaderPath.clear();
    k.monitorPath.clear();
    k.startAddress = 0;
    k.endAddress = 0;
    k.patchStartAddress = 0;
    k.featureCount = 0;
    k.reserved = 0;
    k.loaderAck = kTrue;
    ++st.kernelCount;
}

void RemoveKernel(ProgramState& st, int index) {
    CheckBound(index, st.kernelCount - 1, "kernel");
    for (int i = index; i + 1 < st.kernelCount; ++i) st.kernels[i] = st.kernels[i + 1];
    --st.kernelCount;
    if (index == st.CurrentKernel) SelectDefaultKernel(st);
}

void AddFeature(ProgramState& st, std::string_view feature, int index) {
    Kernel& k = st.kernels[ResolveKernelIndex(st, index)];
    CheckBound(k.featureCount, 63, "kernel feature");
    k.features[k.featureCount++] = KernelFeature{std::string(feature), 0, kTrue};
}

void RemoveFeature(ProgramState& st, std::string_view feature, int index) {
    Kernel& k = st.kernels[ResolveKernelIndex(st, index)];
    for (int i = 0; i < k.featureCount && i <= 63; ++i) {
        if (k.features[i].name != feature) continue;
        for (int j = i; j + 1 < k.featureCount; ++j) k.features[j] = k.features[j + 1];
        --k.featureCount;
        return;
    }
}

}  // namespace vortelm
