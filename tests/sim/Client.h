#pragma once
// A small byte-level client of the virtual board for the tests, written
// from the wire tables: it knows the command bytes, the acknowledges and the
// field encodings, and nothing of the host's link code. It runs on a
// virtual clock that jumps to the board's next event.

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "sim/Sim.h"

namespace simtest {

inline std::string DataDir() {
    return std::string(VORTELM_SOURCE_DIR) + "/data";
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

// Intel HEX reader of our own: data (00), end (01), extended segment (02)
// and extended linear (04) records. Returns address -> byte.
inline std::map<uint32_t, uint8_t> ReadHex(const std::string& path) {
    std::map<uint32_t, uint8_t> out;
    std::istringstream in(ReadFile(path));
    std::string line;
    uint32_t base = 0;
    auto hex = [](const std::string& s, std::size_t at, std::size_t n) {
        return static_cast<uint32_t>(std::stoul(s.substr(at, n), nullptr, 16));
    };
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.size() < 11 || line[0] != ':') continue;
        const uint32_t n = hex(line, 1, 2), off = hex(line, 3, 4), type = hex(line, 7, 2);
        uint32_t sum = 0;
        for (std::size_t i = 1; i + 1 < line.size(); i += 2) sum += hex(line, i, 2);
        EXPECT_EQ(sum & 0xFF, 0u) << path << ": " << line;
        if (type == 0)
            for (uint32_t i = 0; i < n; ++i)
                out[base + off + i] = static_cast<uint8_t>(hex(line, 9 + 2 * i, 2));
        else if (type == 2)
            base = hex(line, 9, 4) << 4;
        else if (type == 4)
            base = hex(line, 9, 4) << 16;
        else if (type == 1)
            break;
    }
    return out;
}

inline std::vector<uint8_t> Flatten(const std::map<uint32_t, uint8_t>& m) {
    std::vector<uint8_t> v;
    for (const auto& [a, b] : m) v.push_back(b);
    return v;
}

struct Client {
    int64_t now = 0;
    std::unique_ptr<vortelm::channel::ByteChannel> ch;
    std::string error;

    explicit Client(const std::string& options = "", const std::string& controller = "ALD7RK_BB") {
        auto r = vortelm::sim::OpenInProcess(options, controller, [this] { return now; });
        ch = std::move(r.channel);
        error = r.error;
    }

    void send(const std::vector<uint8_t>& bytes) {
        ASSERT_TRUE(ch);
        ASSERT_EQ(ch->write(bytes), static_cast<std::ptrdiff_t>(bytes.size()));
    }
    void send1(uint8_t b) { send(std::vector<uint8_t>{b}); }
    // Up to n bytes within timeoutUs of virtual time.
    std::vector<uint8_t> recv(std::size_t n, int64_t timeoutUs = 2'000'000) {
        std::vector<uint8_t> got;
        const int64_t deadline = now + timeoutUs;
        while (got.size() < n) {
            uint8_t buf[4096];
            const std::size_t want = std::min(sizeof buf, n - got.size());
            const auto k = ch->read(std::span<uint8_t>(buf, want));
            if (k < 0) break;
            got.insert(got.end(), buf, buf + k);
            if (got.size() >= n) break;
            const auto next = ch->nextEventUs();
            if (!next || *next > deadline) {
                now = deadline;
                const auto k2 =
                    ch->read(std::span<uint8_t>(buf, std::min(sizeof buf, n - got.size())));
                if (k2 > 0) got.insert(got.end(), buf, buf + k2);
                break;
            }
            now = std::max(now, *next);
        }
        return got;
    }
    int recv1(int64_t timeoutUs = 2'000'000) {
        auto v = recv(1, timeoutUs);
        return v.empty() ? -1 : v[0];
    }
    // Lets virtual time pass and returns everything that arrived.
    std::vector<uint8_t> drain(int64_t us = 100'000) {
        now += us;
        std::vector<uint8_t> got;
        uint8_t buf[4096];
        std::ptrdiff_t k = 0;
        while ((k = ch->read(buf)) > 0) got.insert(got.end(), buf, buf + k);
        return got;
    }

    static std::vector<uint8_t> Addr(uint32_t a) {
        return {static_cast<uint8_t>(a), static_cast<uint8_t>(a >> 8),
                static_cast<uint8_t>(a >> 16)};
    }
    static std::vector<uint8_t> Word(uint32_t w) {
        return {static_cast<uint8_t>(w), static_cast<uint8_t>(w >> 8)};
    }

    // Bootstrap with the named kernel files; returns the three replies.
    struct BootReplies {
        int id = -1, loaderAck = -1, coreAck = -1;
    };
    BootReplies boot(const std::string& loaderFile, const std::string& coreFile,
                     bool loaderAck = true) {
        BootReplies r;
        send1(0x00);
        r.id = recv1(100'000);
        send(Flatten(ReadHex(DataDir() + "/" + loaderFile)));
        if (loaderAck) r.loaderAck = recv1();
        send(Flatten(ReadHex(DataDir() + "/" + coreFile)));
        r.coreAck = recv1();
        return r;
    }
    bool bootDefault() {
        auto r = boot("KERNEL/ALD4LDR.HEX", "KERNEL/ALD4CORE.HEX");
        return r.id == 0xA5 && r.loaderAck == 0x01 && r.coreAck == 0x03;
    }

    // ---- monitor exchanges: each returns false on a wrong or missing byte
    bool writeBlock(uint32_t a, const std::vector<uint8_t>& data, int* checksum = nullptr) {
        send1(0x84);
        if (recv1() != 0xAA) return false;
        auto h = Addr(a);
        auto l = Word(static_cast<uint32_t>(data.size()));
        h.insert(h.end(), l.begin(), l.end());
        send(h);
        send(data);
        if (recv1(120'000'000) != 0xEA) return false;  // the data may take long on a paced line
        send1(0x33);
        if (recv1() != 0xAA) return false;
        const int c = recv1();
        if (checksum) *checksum = c;
        return recv1() == 0xEA;
    }
    std::optional<std::vector<uint8_t>> readBlock(uint32_t a, uint16_t n, int* checksum = nullptr) {
        send1(0x85);
        if (recv1() != 0xAA) return std::nullopt;
        auto h = Addr(a);
        auto l = Word(n);
        h.insert(h.end(), l.begin(), l.end());
        send(h);
        auto data = recv(n, 120'000'000);
        if (data.size() != n) return std::nullopt;
        if (recv1() != 0xEA) return std::nullopt;
        send1(0x33);
        if (recv1() != 0xAA) return std::nullopt;
        const int c = recv1();
        if (checksum) *checksum = c;
        if (recv1() != 0xEA) return std::nullopt;
        return data;
    }
    bool writeWord(uint32_t a, uint16_t v) {
        send1(0x82);
        if (recv1() != 0xAA) return false;
        auto h = Addr(a);
        auto w = Word(v);
        h.insert(h.end(), w.begin(), w.end());
        send(h);
        return recv1() == 0xEA;
    }
    int readWord(uint32_t a) {
        send1(0xCD);
        if (recv1() != 0xAA) return -1;
        send(Addr(a));
        auto d = recv(2);
        if (d.size() != 2 || recv1() != 0xEA) return -1;
        return d[0] | (d[1] << 8);
    }
    bool simple(uint8_t command) {
        send1(command);
        if (recv1() != 0xAA) return false;
        return recv1() == 0xEA;
    }
    bool go(uint32_t a) {
        send1(0x41);
        if (recv1() != 0xAA) return false;
        send(Addr(a));
        return recv1() == 0xEA;
    }
    // C_CALL; regs in/out R8..R15. Returns false on a wrong acknowledge.
    bool call(uint32_t a, std::array<uint16_t, 8>& regs, bool sendZero = false,
              int* extra = nullptr) {
        send1(0x9F);
        if (recv1() != 0xAA) return false;
        auto h = Addr(a);
        for (auto r : regs) {
            auto w = Word(r);
            h.insert(h.end(), w.begin(), w.end());
        }
        if (sendZero) h.push_back(0x00);
        send(h);
        auto back = recv(16, 30'000'000);
        if (back.size() != 16) return false;
        if (recv1() != 0xEA) return false;
        for (int i = 0; i < 8; ++i)
            regs[static_cast<std::size_t>(i)] =
                static_cast<uint16_t>(back[2 * i] | (back[2 * i + 1] << 8));
        if (sendZero) {
            const int e = recv1();
            if (extra) *extra = e;
        }
        return true;
    }
    // Loads an image file through the monitor; returns its first address.
    uint32_t download(const std::string& file) {
        auto m = ReadHex(DataDir() + "/" + file);
        uint32_t start = m.begin()->first;
        std::vector<uint8_t> run;
        uint32_t runStart = start, prev = start - 1;
        for (const auto& [a, b] : m) {
            if (a != prev + 1 && !run.empty()) {
                EXPECT_TRUE(writeBlock(runStart, run));
                run.clear();
            }
            if (run.empty()) runStart = a;
            run.push_back(b);
            prev = a;
        }
        if (!run.empty()) {
            EXPECT_TRUE(writeBlock(runStart, run));
        }
        return start;
    }
};

}  // namespace simtest
