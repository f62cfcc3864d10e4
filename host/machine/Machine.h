#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/machine/Request.h"
#include "host/providers/Reading.h"

namespace emstatus::host {

/// An object as it stands at this moment: its reading, with Quality::Late when that has grown too old.
struct ObjectView {
  ObjectAddress address;
  Reading reading;
  std::chrono::milliseconds age{0};
};

/// The machine whose health is told: this one, or one that a scenario plays.
class Machine {
 public:
  Machine() = default;
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;
  virtual ~Machine() = default;

  /// The storage extension cabinets, in order; the server itself is cabinet 0. [any thread]
  virtual std::vector<std::uint32_t> ExtensionCabinets() const = 0;

  /// Begins to read. `changed` is called, on any thread, whenever the state of an object is another than
  /// before; it must only take note. [main thread, once]
  virtual void Start(std::function<void()> changed) = 0;

  /// Waits until everything has been read once; false when `limit` came first. [main thread, after Start]
  virtual bool WaitUntilRead(std::chrono::milliseconds limit) = 0;

  /// Answers a request about one of the numbering's classes: "not supported" for a question or a class that
  /// is not known, "not found" for an object that is not there, "failed" when there is no answer within
  /// `timeout`; what comes later is dropped. [any thread, several at once]
  virtual Answer Ask(const Request& request, std::chrono::milliseconds timeout) = 0;

  /// The object at an address, also by its name for an address from kFirstNamedObject on. [any thread]
  virtual std::optional<ObjectView> Find(const ObjectAddress& address) const = 0;

  /// Reads again as soon as possible. [any thread]
  virtual void Refresh() = 0;

  /// The module begins a scan. [any thread]
  virtual void OnScanBegin() = 0;

  /// Ends all reading; questions that are still waiting fail at once. [main thread]
  virtual void Stop() = 0;
};

}  // namespace emstatus::host
