#pragma once
// The poll loop under every wait of both backends' operations: a state wait,
// a wait for a link to answer 404, a wait for a set of objects to go. What a
// poll reads and how it judges the answer is the caller's; when the loop
// pauses, how it reads the time and when it gives up live here only.
#include <cstdint>

namespace OracleCloudSDKWrapper {

class EventBase;

// What one poll found.
enum class PollResult {
    Done,     // the awaited state: the wait succeeds
    Failed,   // a read failed or an error state showed: the wait fails at once
    Pending,  // not yet: poll again after the interval, unless the time is up
};

// How a wait ended.
enum class WaitEnd { Done, Failed, TimedOut };

// Mixed into the operations classes of both backends. The clock and the pause
// are virtual so that unit tests can run waits on a scripted clock.
class OperationPoller {
public:
    virtual ~OperationPoller() = default;

protected:
    // A wait tunable of section "VirtualServer" (seconds). A value that does
    // not fit 32 bits would wrap into a nonsense wait: the default is kept and
    // the value logged as out of range.
    static uint32_t ReadWaitSeconds(const EventBase* log, const char* key, uint32_t def);

    // Seconds of a steady clock.
    virtual uint64_t monotonicSeconds();
    // Sleeps on the caller's thread (PlatformSleep of seconds * 1000 ms).
    virtual void pauseBetweenPolls(uint32_t seconds);

    // Runs: announce(); pause(interval); poll(); ... until a poll says Done or
    // Failed, or a Pending poll ends more than timeoutSeconds after the start
    // (TimedOut). The first poll therefore comes one full interval after the
    // call: a state read right after a request would only show the transition
    // it started. A wait lasts at most timeout + one interval (+ one poll).
    template <class Announce, class Poll>
    WaitEnd pollUntilSettled(uint32_t intervalSeconds, uint64_t timeoutSeconds, Announce&& announce, Poll&& poll) {
        const uint64_t start = monotonicSeconds();
        for (;;) {
            announce();
            pauseBetweenPolls(intervalSeconds);
            const PollResult result = poll();
            if (result == PollResult::Done) return WaitEnd::Done;
            if (result == PollResult::Failed) return WaitEnd::Failed;
            if (monotonicSeconds() - start > timeoutSeconds) return WaitEnd::TimedOut;
        }
    }

    template <class Poll>
    WaitEnd pollUntilSettled(uint32_t intervalSeconds, uint64_t timeoutSeconds, Poll&& poll) {
        return pollUntilSettled(intervalSeconds, timeoutSeconds, [] {}, poll);
    }
};

}  // namespace OracleCloudSDKWrapper
