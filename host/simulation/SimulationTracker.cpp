#include "host/simulation/SimulationTracker.h"

#include <exception>

namespace emstatus::host {

void SimulationTracker::ScanBegins() {
  const std::lock_guard guard(lock_);
  previous_ = current_;
  try {
    Follow();
  } catch (const std::exception&) {
    // The module cannot read it either.
    current_ = {};
  }
}

void SimulationTracker::ScanEnds() {
  const std::lock_guard guard(lock_);
  previous_ = {};
}

void SimulationTracker::Follow() {
  const auto stamp = folder_.Look();
  if (stamp && stamp == stamp_) {
    return;
  }
  stamp_.reset();
  current_ = {};
  const auto text = stamp ? folder_.Read() : std::nullopt;
  if (!text) {
    return;
  }
  SimulationFile file = ReadSimulation(*text, everRead_);
  if (file.active) {
    const SimulatedParts named = ReadSimulation(*text).parts;
    for (const auto& [name, part] : file.parts) {
      if (!named.contains(name)) {
        current_.kept.insert(name);
      }
    }
    everRead_ = file.parts;
    current_.parts = std::move(file.parts);
    current_.byHand = file.byHand;
    current_.until = file.until;
  }
  stamp_ = stamp;
}

SimulationState SimulationTracker::State() const {
  const std::lock_guard guard(lock_);
  SimulationState state = current_.InForce() ? current_ : previous_;
  state.parts.insert(previous_.parts.begin(), previous_.parts.end());
  return state;
}

}  // namespace emstatus::host
