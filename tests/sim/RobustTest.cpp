// Any byte from the line must leave the board in one piece: random bytes in
// every state, for every family, after which a reset brings it back.

#include <gtest/gtest.h>

#include <random>

#include "Client.h"

using simtest::Client;

TEST(Robust, RandomBytesNeverBreakTheBoard) {
    struct Kernel {
        const char* controller;
        const char* loader;
        const char* core;
        int id;
    } kernels[] = {{"ALD7RK_BB", "KERNEL/ALD4LDR.HEX", "KERNEL/ALD4CORE.HEX", 0xA5},
                   {"ZTA9Y_BB", "KERNEL/ZTA9YLDR.HEX", "KERNEL/ZTA9YCOR.HEX", 0xC6},
                   {"ZT7000_BB", "KERNEL/ZT7LDR.HEX", "KERNEL/ZT7CORE.HEX", 0xC7}};
    std::mt19937 rng(12345);
    for (const auto& k : kernels) {
        Client c("?kline=1&pace=1&latency=1", k.controller);
        for (int round = 0; round < 20; ++round) {
            if (round % 2 == 0) {
                c.boot(k.loader, k.core);  // K-Line: the replies are mixed with echoes
            }
            std::vector<uint8_t> noise(2000);
            for (auto& b : noise) b = static_cast<uint8_t>(rng());
            c.send(noise);
            c.drain(5'000'000);
            // reset into the bootstrap loader: it must answer again
            c.ch->setDtr(true);
            c.ch->setRts(true);
            c.ch->setRts(false);
            c.drain(1000);
            c.send1(0x00);
            auto got = c.recv(2);
            ASSERT_EQ(got.size(), 2u) << k.controller << " round " << round;
            EXPECT_EQ(got[1], k.id) << k.controller << " round " << round;
        }
    }
}
