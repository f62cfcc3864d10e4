#include "host/machine/ScenarioMachine.h"

#include <algorithm>
#include <condition_variable>
#include <utility>

#include "host/machine/ReadingAnswer.h"

namespace emstatus::host {
namespace {

/// Waits; false when the worker is to stop before `delay` is over.
bool Delay(std::chrono::milliseconds delay, const std::stop_token& stop) {
  std::mutex lock;
  std::condition_variable_any never;
  std::unique_lock guard(lock);
  never.wait_for(guard, stop, delay, [] { return false; });
  return !stop.stop_requested();
}

Answer Special(const ScenarioAnswer& special, Answer usual) {
  if (special.status) {
    usual = {*special.status, std::nullopt};
  }
  if (special.data) {
    usual.data = special.data;
    usual.status = special.status.value_or(std::uint32_t(AnswerStatus::Success));
  }
  return usual;
}

bool Works(const Reading& reading) {
  return reading.quality == Quality::Good && reading.condition != Condition::Critical;
}

}  // namespace

ScenarioMachine::ScenarioMachine(Scenario scenario, std::function<Clock::time_point()> now)
    : scenario_(std::move(scenario)), now_(std::move(now)), start_(now_()) {
  std::map<std::pair<ObjectClass, std::uint32_t>, std::uint32_t> counts;
  for (const ScenarioObject& object : scenario_.objects) {
    const Reading& reading = object.story.front().reading;
    const std::uint32_t cabinet = reading.cabinet.value_or(0);
    const std::uint32_t number = counts[{reading.objectClass, cabinet}]++;
    const std::uint32_t index = RowOf(reading.objectClass).firstIndex + number;
    players_.push_back({&object, {reading.objectClass, index, cabinet}, nullptr});
  }
  AdvanceLatches();
}

ScenarioMachine::~ScenarioMachine() {
  ScenarioMachine::Stop();
}

void ScenarioMachine::Start(std::function<void()> changed) {
  if (scenario_.rescan.count() > 0) {
    rescanner_ = std::make_unique<Worker>(
        "rescan",
        Worker::RegularTask{scenario_.rescan, [changed](const std::stop_token&) { changed(); }, nullptr});
  }
}

void ScenarioMachine::Stop() {
  if (rescanner_) {
    rescanner_->Stop();
  }
  const std::lock_guard guard(laneLock_);
  stopped_ = true;
  for (const auto& [name, lane] : lanes_) {
    lane->Stop();
  }
}

void ScenarioMachine::OnScanBegin() {
  ++scan_;
  AdvanceLatches();
}

std::uint64_t ScenarioMachine::Moment() const {
  const std::uint64_t first = scenario_.bySeconds ? 0 : 1;
  std::uint64_t moment = std::max<std::uint64_t>(scan_, first);
  if (scenario_.bySeconds) {
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(now_() - start_);
    moment = std::uint64_t(std::max<std::int64_t>(passed.count(), 0));
  }
  return scenario_.repeatAfter == 0 ? moment : (moment - first) % scenario_.repeatAfter + first;
}

const ScenarioStep& ScenarioMachine::StoryStep(const Player& player) const {
  const auto& story = player.object->story;
  const auto after = std::ranges::upper_bound(story, Moment(), {}, &ScenarioStep::at);
  return after == story.begin() ? story.front() : *std::prev(after);
}

const ScenarioStep& ScenarioMachine::ShownStep(const Player& player) const {
  const ScenarioStep& step = StoryStep(player);
  const std::lock_guard guard(latchLock_);
  if (step.latched) {
    player.latched = &step;
  }
  return player.latched != nullptr ? *player.latched : step;
}

void ScenarioMachine::AdvanceLatches() const {
  for (const Player& player : players_) {
    static_cast<void>(ShownStep(player));
  }
}

void ScenarioMachine::CountGroup(Reading& reading) const {
  reading.redundancy->present = 0;
  for (const Player& player : players_) {
    const Reading& other = ShownStep(player).reading;
    if (other.redundancy && other.redundancy->group == reading.redundancy->group && Works(other)) {
      ++reading.redundancy->present;
    }
  }
}

ObjectView ScenarioMachine::View(const Player& player) const {
  ObjectView view{player.address, ShownStep(player).reading, std::chrono::milliseconds(0)};
  if (view.reading.redundancy) {
    CountGroup(view.reading);
  }
  return view;
}

const ScenarioMachine::Player* ScenarioMachine::PlayerOf(const ObjectAddress& address) const {
  const auto found = std::ranges::find(players_, address, &Player::address);
  return found == players_.end() ? nullptr : &*found;
}

std::uint32_t ScenarioMachine::Count(ObjectClass objectClass, std::uint32_t cabinet) const {
  return std::uint32_t(std::ranges::count_if(players_, [&](const Player& player) {
    return player.address.objectClass == objectClass && player.address.cabinet == cabinet;
  }));
}

std::optional<ObjectView> ScenarioMachine::FindByIndex(const ObjectAddress& address) const {
  const Player* player = PlayerOf(address);
  return player == nullptr ? std::nullopt : std::optional(View(*player));
}

std::optional<ObjectView> ScenarioMachine::FindByName(ObjectClass objectClass, std::uint32_t cabinet,
                                                      const std::string& name) const {
  for (const Player& player : players_) {
    const Reading& reading = player.object->story.front().reading;
    const bool same = player.address.objectClass == objectClass && player.address.cabinet == cabinet;
    if (same && (reading.name == name || reading.id == name)) {
      return View(player);
    }
  }
  return std::nullopt;
}

Answer ScenarioMachine::Confirm(ObjectClass objectClass, std::uint32_t cabinet, std::chrono::milliseconds) {
  if (Count(objectClass, cabinet) == 0) {
    return Answer::Refusal(AnswerStatus::NotFound);
  }
  std::uint32_t cleared = 0;
  for (const Player& player : players_) {
    const bool same = player.address.objectClass == objectClass && player.address.cabinet == cabinet;
    const bool over = same && !StoryStep(player).latched;
    const std::lock_guard guard(latchLock_);
    cleared += over && player.latched != nullptr ? 1U : 0U;
    player.latched = over ? nullptr : player.latched;
  }
  return cleared == 0 ? Answer::Refusal(AnswerStatus::Failed) : Answer::Of(cleared);
}

Answer ScenarioMachine::Ask(const Request& request, std::chrono::milliseconds timeout) {
  Answer usual = NumberedMachine::Ask(request, timeout);
  const ClassRow* row = FindClass(request.code);
  const auto question = FindQuestion(request.extension);
  if (row == nullptr || !question) {
    return usual;
  }
  const Delivery delivery = DeliveryOf(*row, *question, request);
  if (delivery.answer != nullptr) {
    usual = Special(*delivery.answer, std::move(usual));
  }
  if (delivery.lane == nullptr) {
    return usual;
  }
  const auto delay = delivery.answer == nullptr ? std::chrono::milliseconds(0) : delivery.answer->delay;
  const auto answer = delivery.lane->Call(
      [usual, delay](const std::stop_token& stop) {
        return Delay(delay, stop) ? usual : Answer::Refusal(AnswerStatus::Failed);
      },
      timeout);
  return answer.value_or(Answer::Refusal(AnswerStatus::Failed));
}

ScenarioMachine::Delivery ScenarioMachine::DeliveryOf(const ClassRow& row, Question question,
                                                      const Request& request) {
  const bool aboutClass = IsAboutClass(question);
  const auto object = aboutClass ? std::nullopt : FindAsked(row, request);
  for (const Player& player : players_) {
    const bool meant = aboutClass ? player.address.objectClass == row.objectClass &&
                                        player.address.cabinet == request.cabinet
                                  : object && player.address == object->address;
    if (!meant) {
      continue;
    }
    for (const ScenarioAnswer& answer : ShownStep(player).answers) {
      if (answer.question ? *answer.question == question : !aboutClass) {
        return {&answer, Lane(player, &answer)};
      }
    }
    if (!aboutClass) {
      return {nullptr, Lane(player, nullptr)};
    }
  }
  return {};
}

Worker* ScenarioMachine::Lane(const Player& player, const ScenarioAnswer* answer) {
  const bool shared = !player.object->source.empty();
  if (!shared && (answer == nullptr || answer->delay.count() == 0)) {
    return nullptr;
  }
  const ObjectAddress& address = player.address;
  const std::string name = shared ? player.object->source
                                  : std::string(RowOf(address.objectClass).word) + "/" +
                                        std::to_string(address.cabinet) + "/" + std::to_string(address.index);
  const std::lock_guard guard(laneLock_);
  auto& lane = lanes_[name];
  if (!lane) {
    lane = std::make_unique<Worker>(name);
    if (stopped_) {
      lane->RequestStop();
    }
  }
  return lane.get();
}

}  // namespace emstatus::host
