#pragma once

#include <atomic>
#include <cstdint>

namespace emstatus {

struct EventState;

/// What a wait came to.
enum EventWaitResult : std::int32_t {
  EVENT_SIGNAL = 0,     ///< the event was signalled
  EVENT_TIMEOUT = 102,  ///< the time-out passed
  EVENT_FAILURE = -1,   ///< the handle is closed or empty, or a thread call failed
};

/// A time-out that never passes.
inline constexpr std::uint32_t kNoTimeout = 0xFFFFFFFF;

/// A handle of an event: something that is signalled or not and on which threads wait.
///
/// A manual-reset event stays signalled until it is reset and releases every waiter; an automatic one
/// releases one waiter and resets itself. Handles share an event by copying, or by its name within the
/// process; the last handle takes it down. A handle is empty, open or closed. Nothing throws; steps are
/// written to the trace. Set, Reset, Pulse, Close, Check, SetAttributes, IsValid and Wait: [any thread;
/// several at once]. The others: [no other thread uses this handle, except that threads may still wait while
/// it is destroyed].
class EventHandle {
 public:
  /// Empty.
  EventHandle() noexcept = default;
  /// A further handle of the other's event, open even when the other is closed.
  EventHandle(const EventHandle& other);
  /// The same. An event that this handle held is NOT released and stays for good; nothing happens when both
  /// are the same handle.
  EventHandle& operator=(const EventHandle& other);
  /// Gives the reference up. With the last one waits, looking once a second, until no thread waits on the
  /// event.
  ~EventHandle();

  /// Gives up what this handle held and builds a new event, or shares the existing one of this name, which
  /// keeps its own state and kind of reset. `name` is copied; null: unnamed.
  /// False, with the handle empty, when it cannot be built.
  bool Create(bool initiallySignaled, bool manualReset, const char* name = nullptr);

  /// Signals the event and releases its waiters. False for a closed or empty handle or when waking failed.
  bool Set();
  /// Takes the signal back. False for a closed or empty handle.
  bool Reset();
  /// Releases the waiters that are there and leaves the event not signalled. Results as for Set().
  bool Pulse();
  /// Makes every later operation on this handle fail and leaves the event signalled, with its waiters
  /// released. Other handles of the event stay open; the reference is kept until destruction. Results as for
  /// Set().
  bool Close();
  /// Whether the event is signalled; false for a closed or empty handle.
  bool Check() const;
  /// Whether the handle is not closed; true also for an empty one.
  bool IsValid() const { return !closed_; }
  /// Gives the event other flags. False, with nothing changed, for a closed or empty handle and while any
  /// thread waits on the event.
  bool SetAttributes(bool initiallySignaled, bool manualReset);

  /// Waits until the event is signalled or `timeoutMs` milliseconds of monotonic time have passed
  /// (kNoTimeout: for ever). Any wake-up counts as signalled. An automatic-reset event is reset when this
  /// returns EVENT_SIGNAL. EVENT_FAILURE at once for a closed or empty handle. Writes its steps to the trace
  /// (level 5) when `traceOn`. A thread may be cancelled in here.
  EventWaitResult Wait(std::uint32_t timeoutMs, bool traceOn);

 private:
  EventState* Usable() const { return closed_ ? nullptr : event_; }
  void Share(const EventHandle& other);
  void Release();

  EventState* event_ = nullptr;
  std::atomic<bool> closed_{false};
};

}  // namespace emstatus
