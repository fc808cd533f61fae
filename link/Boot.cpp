#include "link/Boot.h"

#include <utility>

#include "config/Kernels.h"
#include "core/Helpers.h"
#include "core/Host.h"
#include "core/RunTimeError.h"
#include "core/Text.h"
#include "link/ComPort.h"
#include "link/DumpIo.h"
#include "link/Monitor.h"

namespace vortelm::link {

namespace {

std::string Hex2(int value) {
    return HexText(value & 0xFF, 2);
}

}  // namespace

const Kernel& Boot::kernel() const {
    CheckBound(st_.CurrentKernel, kKernelBound, "kernel");
    return st_.kernels[static_cast<size_t>(st_.CurrentKernel)];
}

void Boot::Loader_pre() {
    port_.setReceiveThreshold(0);
    LoadImageFile(st_, kernel().loaderPath, reader_);
    if (HasFeature(st_, "RELOCATABLE", -1) && kernel().patchStartAddress >= 1) PatchLoader();
    Text2Buffer(st_, "*Loader file Prepare\r\n");
    LoaderImage = FlattenSelections(st_);
    LoaderLength = static_cast<int32_t>(LoaderImage.size());
    port_.setReceiveThreshold(1);
}

void Boot::Vortelm_pre() {
    port_.setReceiveThreshold(0);
    LoadImageFile(st_, kernel().monitorPath, reader_);
    Text2Buffer(st_, "*Vortelm file Prepare\r\n");
    CoreImage = FlattenSelections(st_);
    CoreLength = static_cast<int32_t>(CoreImage.size());
    if (HasFeature(st_, "RELOCATABLE", -1) && kernel().patchStartAddress >= 1) PatchVortelm();
    port_.setReceiveThreshold(1);
}

void Boot::PatchLoader() {
    // The loader holds the core's load range as 16-bit constants, which must
    // follow the core. Every byte position is tried, not only even ones.
    const Kernel& k = kernel();
    const int32_t oldStart = k.startAddress & 0xFFFF;
    const int32_t oldEnd = k.endAddress & 0xFFFF;
    const int32_t newStart = k.patchStartAddress & 0xFFFF;
    const int32_t newEnd = (k.endAddress + k.patchStartAddress - k.startAddress) & 0xFFFF;
    const int32_t oldBefore = (oldStart - 1) & 0xFFFF;
    const int32_t newBefore = (newStart - 1) & 0xFFFF;
    auto word = [&](int32_t a) {
        return dumpio::Read(st_.dump, a) + dumpio::Read(st_.dump, a + 1) * 256;
    };
    auto put = [&](int32_t a, int32_t w) {
        dumpio::Write(st_.dump, a, static_cast<uint8_t>(w & 0xFF));
        dumpio::Write(st_.dump, a + 1, static_cast<uint8_t>((w >> 8) & 0xFF));
    };
    const auto& sel = st_.selections;
    for (int i = 0; i < sel.count; ++i)
        for (int32_t a = sel.start[i]; a <= sel.end[i] - 1; ++a) {
            if (word(a) == oldStart) put(a, newStart);
            if (word(a) == oldEnd) put(a, newEnd);
            if (st_.KLINE == 1 && word(a) == oldBefore) put(a, newBefore);
        }
}

void Boot::PatchVortelm() {
    // The core runs wherever it is put: only its picture in dump memory and
    // the protected range move.
    const Kernel& k = kernel();
    const int32_t newStart = k.patchStartAddress;
    const int32_t newEnd = k.endAddress + k.patchStartAddress - k.startAddress;
    auto& sel = st_.selections;
    if (sel.count > 0) {
        for (int i = 0; i < sel.count; ++i)
            for (int32_t a = sel.start[i]; a <= sel.end[i]; ++a)
                dumpio::SetMark(st_.dump, a, dumpio::kDefined, false);
        const int32_t shift = newStart - sel.start[0];
        for (int i = 0; i < sel.count; ++i) {
            std::vector<uint8_t> bytes;
            for (int32_t a = sel.start[i]; a <= sel.end[i]; ++a)
                bytes.push_back(dumpio::Read(st_.dump, a));
            sel.start[i] += shift;
            sel.end[i] += shift;
            for (size_t j = 0; j < bytes.size(); ++j) {
                const int32_t a = sel.start[i] + static_cast<int32_t>(j);
                dumpio::Write(st_.dump, a, bytes[j]);
                dumpio::SetMark(st_.dump, a, dumpio::kDefined, true);
            }
        }
    }
    st_.KernelStartAddress = newStart;
    st_.KernelEndAddress = newEnd;
    for (int32_t i = 0; i < CoreLength; ++i)
        dumpio::Write(st_.dump, newStart + i, CoreImage[static_cast<size_t>(i)]);
}

int Boot::Initiate(int prompt) {
    st_.ConnectionState = kNotConnected;
    port_.ComSemaphore = 0;
    port_.setReceiveThreshold(0);
    if (prompt == 1 &&
        st_.host->messageBox("Please reset your Hardware NOW !", MsgButtons::OkCancel,
                             MsgIcon::Exclamation) == MsgAnswer::Cancel) {
        port_.Cmd_V();
        port_.setReceiveThreshold(1);
        return -1;
    }
    Text2Buffer(st_, "*send Byte  " + std::to_string(st_.INITCHAR) + "+ Loader + VortelmCore\r\n");
    // Empty the line of noise and of what a running target sends.
    while (port_.inCount() >= 1) (void)port_.SSReceive(st_.CONNECTTIMEOUT);
    IdByte = -1;
    for (int32_t i = 0; i < st_.CONNECTRETRY; ++i) {
        port_.SSSend(static_cast<uint8_t>(st_.INITCHAR & 0xFF));
        IdByte = static_cast<int16_t>(port_.SSReceive(st_.CONNECTTIMEOUT));
        if (IdByte >= 0) break;
    }
    port_.setReceiveThreshold(1);
    return IdByte;
}

int Boot::Loader_new() {
    port_.setReceiveThreshold(0);
    if (!LoaderImage.empty()) port_.SSSendN(LoaderImage);
    if (kernel().loaderAck == kTrue)
        LoaderAckByte = static_cast<int16_t>(port_.SSReceive(st_.TIMEOUT));
    port_.setReceiveThreshold(1);
    return LoaderAckByte;
}

int Boot::Vortelm_new() {
    port_.setReceiveThreshold(0);
    if (!CoreImage.empty()) port_.SSSendN(CoreImage);
    port_.setReceiveThreshold(1);
    port_.setReceiveThreshold(0);
    CoreAckByte = static_cast<int16_t>(port_.SSReceive(st_.TIMEOUT));
    const auto& sel = st_.selections;
    if (sel.count > 0) {
        int32_t lo = sel.start[0];
        int32_t hi = sel.end[0];
        for (int i = 1; i < sel.count; ++i) {
            lo = std::min(lo, sel.start[i]);
            hi = std::max(hi, sel.end[i]);
        }
        st_.KernelStartAddress = lo;
        st_.KernelEndAddress = hi;
    }
    port_.setReceiveThreshold(1);
    return CoreAckByte;
}

int Boot::Receive_ID_VortACK() {
    const auto& c = st_.codes;
    int result = 0;
    port_.setReceiveThreshold(0);
    if (IdByte < 1)
        Text2Buffer(st_, "*ERROR: No ID Byte received\r\n");
    else
        Text2Buffer(st_, "*RECEIVE - MC-Identifier: " + Hex2(IdByte) + "\r\n");
    if (kernel().loaderAck == kTrue) {
        if (LoaderAckByte < 1) {
            // Left as it is: only the core's acknowledge decides.
            Text2Buffer(st_, "*ERROR: No Loader_ACK Byte received (VortelmCore not loaded)\r\n");
        } else if (LoaderAckByte != c.A_LOADER_STARTED) {
            Text2Buffer(st_, "*RECEIVE - LoaderACK ERROR: Incorrect LoaderAck received " +
                                 Hex2(LoaderAckByte) + "\r\n");
            result = -1;
        } else {
            Text2Buffer(st_, "*RECEIVE - LoaderACK " + Hex2(LoaderAckByte) + " received\r\n");
        }
    }
    if (CoreAckByte < 1) {
        Text2Buffer(st_, "*ERROR: No Vortelm Byte received (Vortelm not successful)\r\n");
        result = -2;
    } else if (CoreAckByte != c.A_APPLICATION_STARTED) {
        Text2Buffer(st_, "*RECEIVE - Vortelm ERROR: Incorrect Vortelm ACK received " +
                             Hex2(CoreAckByte) + "\r\n");
        result = -1;
    } else {
        Text2Buffer(st_, "*RECEIVE - Vortelm ACK " + Hex2(CoreAckByte) + " received\r\n");
    }
    port_.setReceiveThreshold(1);
    return result;
}

}  // namespace vortelm::link
