#pragma once

#include <chrono>
#include <thread>

#include "runtime/VirtualEventLoop.h"

namespace testsupport {

// Lets real components finish on a virtual-time loop: delivers posted events until no work is in
// hand and nothing is queued. False when that takes longer than the bound (a bug should fail,
// not hang).
inline bool settleRealWork(rt::VirtualEventLoop &loop, std::chrono::seconds bound = std::chrono::seconds(30))
{
    const auto deadline = std::chrono::steady_clock::now() + bound;
    for (;;) {
        loop.doEvents();
        if (loop.workInHand().empty()) {
            loop.doEvents();
            if (loop.workInHand().empty() && !loop.hasPending())
                return true;
        }
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

} // namespace testsupport
