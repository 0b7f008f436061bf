#include <cadex/internal/Progress.hxx>

#include <algorithm>
#include <atomic>
#include <optional>
#include <thread>
#include <utility>

#include <cadex/internal/Reports.hxx>

namespace cadex {
namespace internal {

using Clock = std::chrono::steady_clock;

struct ProgressState
{
    ProgressListening::Listener listener;
    std::chrono::milliseconds interval = {};
    ProgressState* before = nullptr;
    std::thread::id thread = std::this_thread::get_id();
    std::atomic<bool> isCancelled = false;

    // Of the listener's thread alone:
    std::optional<Clock::time_point> lastCall; // none when a stage has just begun
    bool isCalling = false;
    ProgressStage stage = ProgressStage::Reading;
    double low = 0; // the present range within the stage
    double high = 1;
    double done = 0; // of the stage; never goes back within it
};

namespace {

std::atomic<ProgressState*> current = nullptr;

/// The listening that this thread may call; null on all other threads.
ProgressState* CurrentHere()
{
    ProgressState* state = current.load(std::memory_order_acquire);
    return state != nullptr && state->thread == std::this_thread::get_id() && !state->isCalling ? state
                                                                                                : nullptr;
}

void Call(ProgressState& state)
{
    if (state.isCancelled || (state.lastCall && Clock::now() - *state.lastCall < state.interval)) {
        return;
    }
    bool goesOn = false;
    state.isCalling = true;
    try {
        goesOn = state.listener(state.stage, state.done);
    } catch (...) { // NOLINT(bugprone-empty-catch): the work ends as if cancelled
    }
    state.isCalling = false;
    state.lastCall = Clock::now(); // a slow listener is not called any more often for it
    state.isCancelled = !goesOn;
}

} // namespace

ProgressListening::ProgressListening(Listener listener, std::chrono::milliseconds interval)
    : myState(std::make_unique<ProgressState>())
{
    myState->listener = std::move(listener);
    myState->interval = interval;
    myState->before = current.exchange(myState.get());
}

ProgressListening::~ProgressListening()
{
    current = myState->before;
}

bool ProgressListening::IsCancelled() const
{
    return myState->isCancelled;
}

bool Progress::GoesOn(std::size_t done, std::size_t count)
{
    if (ProgressState* const state = CurrentHere(); state != nullptr && count > 0) {
        const double part = static_cast<double>(std::min(done, count)) / static_cast<double>(count);
        state->done = std::max(state->done, state->low + (state->high - state->low) * part);
    }
    return GoesOn();
}

bool Progress::GoesOn()
{
    if (ProgressState* const state = CurrentHere()) {
        Call(*state);
    }
    return !IsCancelled();
}

bool Progress::IsCancelled()
{
    const ProgressState* const state = current.load(std::memory_order_acquire);
    return state != nullptr && state->isCancelled;
}

bool Progress::ReportCancel() noexcept
{
    if (!IsCancelled()) {
        return false;
    }
    try {
        Reports::Clear();
        Reports::Add(Report::Kind::Refused, "cancelled");
    } catch (...) { // NOLINT(bugprone-empty-catch): without memory for the reason it is not told
    }
    return true;
}

ProgressRange::ProgressRange(ProgressStage stage) : ProgressRange(0, 1)
{
    if (myState != nullptr) {
        if (myState->stage != stage) {
            myState->lastCall.reset();
        }
        myState->stage = stage;
        myState->low = 0;
        myState->high = 1;
        myState->done = 0;
        Progress::GoesOn();
    }
}

ProgressRange::ProgressRange(std::size_t step, std::size_t count) : myState(CurrentHere())
{
    if (myState != nullptr) {
        myLow = myState->low;
        myHigh = myState->high;
        const double width = (myHigh - myLow) / static_cast<double>(std::max<std::size_t>(count, 1));
        myState->low = myLow + width * static_cast<double>(step);
        myState->high = myState->low + width;
    }
}

ProgressRange::~ProgressRange()
{
    if (myState != nullptr) {
        myState->low = myLow;
        myState->high = myHigh;
    }
}

} // namespace internal
} // namespace cadex
