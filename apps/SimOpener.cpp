#include "apps/SimOpener.h"

#include <cerrno>
#include <string>
#include <utility>

#include "sim/Sim.h"

namespace vortelm::apps {

void AddSimOpener(link::ChannelOpeners& openers) {
    openers.add("sim:", [](const link::OpenRequest& q) {
        link::OpenResult r;
        r.path = std::string(q.portText);
        auto s = sim::OpenInProcess(q.rest, q.controller, q.clock);
        if (!s.channel) {
            r.err = EINVAL;
            r.error = s.error.empty() ? std::string("the virtual board did not start") : s.error;
            return r;
        }
        (void)s.channel->configure(q.settings);
        r.channel = std::move(s.channel);
        return r;
    });
}

}  // namespace vortelm::apps
