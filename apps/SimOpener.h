#pragma once
// The virtual board as a channel opener: "sim:" and its options open a board
// in process. The programs and the tests that want the board link
// vortelm_simopener and add it to their table at the top; the link itself
// knows no board.

#include "link/Ports.h"

namespace vortelm::apps {

// Adds (or replaces) the "sim:" opener of the table.
void AddSimOpener(link::ChannelOpeners& openers);

}  // namespace vortelm::apps
