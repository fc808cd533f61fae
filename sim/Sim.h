#pragma once
// The virtual board's entry for the host side: the port text "sim:" opens a
// board in process through this one function. Nothing else of sim/ is seen
// by the host.

#include <memory>
#include <string>
#include <string_view>

#include "link/ByteChannel.h"

namespace vortelm::sim {

struct OpenResult {
    std::unique_ptr<channel::ByteChannel> channel;  // null on failure
    std::string error;                              // why, when null
};

// options: the text behind "sim:", e.g. "" or "?kline=1&pace=1&latency=1".
// controller: the configured controller type (MCTYPE), e.g. "ALD7RK_BB".
// clock: monotonic microseconds; tests pass a virtual clock.
[[nodiscard]] OpenResult OpenInProcess(std::string_view options, std::string_view controller,
                                       channel::MicrosClock clock);

}  // namespace vortelm::sim
