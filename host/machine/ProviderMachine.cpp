#include "host/machine/ProviderMachine.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace emstatus::host {
namespace {

std::chrono::milliseconds Until(ObjectTable::Clock::time_point deadline) {
  const auto rest = deadline - ObjectTable::Clock::now();
  return std::max(std::chrono::duration_cast<std::chrono::milliseconds>(rest), std::chrono::milliseconds(0));
}

}  // namespace

struct ProviderMachine::Feed {
  void Read(const std::stop_token& stop) const {
    const auto begin = ObjectTable::Clock::now();
    bool differs = false;
    try {
      auto readings = provider->Read({begin, std::chrono::system_clock::now(), stop});
      differs = table->Update(number, std::move(readings), begin, ObjectTable::Clock::now());
    } catch (const std::exception& failure) {
      differs = table->Fail(number, failure.what(), ObjectTable::Clock::now());
    }
    if (differs && !stop.stop_requested()) {
      changed();
    }
  }

  std::unique_ptr<Provider> provider;
  std::shared_ptr<ObjectTable> table;
  std::size_t number = 0;
  std::function<void()> changed;
};

ProviderMachine::ProviderMachine(std::vector<std::unique_ptr<Provider>> providers) {
  for (auto& provider : providers) {
    auto feed = std::make_shared<Feed>();
    feed->number = table_->AddProvider(std::string(provider->Name()), provider->LateAfter());
    feed->provider = std::move(provider);
    feed->table = table_;
    feeds_.push_back(std::move(feed));
  }
}

ProviderMachine::~ProviderMachine() {
  ProviderMachine::Stop();
}

void ProviderMachine::Start(std::function<void()> changed) {
  for (const auto& feed : feeds_) {
    feed->changed = changed;
    Worker::RegularTask task;
    task.interval = feed->provider->Interval();
    task.run = [feed](const std::stop_token& stop) { feed->Read(stop); };
    task.watch = [feed](std::vector<pollfd>& descriptors) { feed->provider->Watch(descriptors); };
    workers_.push_back(std::make_unique<Worker>(std::string(feed->provider->Name()), std::move(task)));
  }
}

bool ProviderMachine::WaitUntilRead(std::chrono::milliseconds limit) {
  return table_->WaitUntilRead(limit);
}

void ProviderMachine::Refresh() {
  for (const auto& worker : workers_) {
    worker->Hurry();
  }
}

void ProviderMachine::Stop() {
  for (const auto& worker : workers_) {
    worker->RequestStop();
  }
  const auto deadline = ObjectTable::Clock::now() + Worker::kEndWait;
  for (const auto& worker : workers_) {
    worker->Stop(Until(deadline));
  }
}

std::uint32_t ProviderMachine::Count(ObjectClass objectClass, std::uint32_t cabinet) const {
  return table_->Count(objectClass, cabinet);
}

std::optional<ObjectView> ProviderMachine::FindByIndex(const ObjectAddress& address) const {
  return table_->Find(address, ObjectTable::Clock::now());
}

std::optional<ObjectView> ProviderMachine::FindByName(ObjectClass objectClass, std::uint32_t cabinet,
                                                      const std::string& name) const {
  return table_->FindByName(objectClass, cabinet, name, ObjectTable::Clock::now());
}

Answer ProviderMachine::Confirm(ObjectClass objectClass, std::uint32_t cabinet,
                                std::chrono::milliseconds timeout) {
  const auto keys = table_->Keys(objectClass, cabinet);
  if (keys.empty()) {
    return Answer::Refusal(AnswerStatus::NotFound);
  }
  const auto deadline = ObjectTable::Clock::now() + timeout;
  std::uint32_t cleared = 0;
  for (const auto& key : keys) {
    Worker& worker = *workers_.at(key.provider);
    const auto answer = worker.Call(
        [feed = feeds_[key.provider], objectClass, id = key.id](const std::stop_token&) {
          return Answer::Of(feed->provider->Confirm(objectClass, id));
        },
        Until(deadline));
    if (answer && answer->data == true) {
      ++cleared;
    }
  }
  cleared += table_->DismissGone(objectClass, cabinet);
  // Not before all are asked: a read would make the rest wait.
  if (cleared != 0) {
    Refresh();
  }
  return cleared == 0 ? Answer::Refusal(AnswerStatus::Failed) : Answer::Of(cleared);
}

}  // namespace emstatus::host
