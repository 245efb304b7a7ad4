#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace platform::fake {

// A fake source that sets its own pace: the fake trigger asks it how long a flow lasts and
// whether it fails on the way, and hands it the flow's clock.
class FakeChainSource {
public:
    struct Failure {
        int64_t afterMs = 0;
        int code = 0;
        std::string message;
    };

    // Virtual milliseconds the whole flow takes.
    virtual int64_t flowMs() = 0;
    // A read error on the way, if there is one.
    virtual std::optional<Failure> failure() = 0;
    // Milliseconds flowed so far, while the flow runs; cleared when it ends.
    virtual void setClock(std::function<int64_t()> elapsedMs) = 0;

protected:
    ~FakeChainSource() = default;
};

} // namespace platform::fake
