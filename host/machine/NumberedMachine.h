#pragma once

#include <map>
#include <mutex>
#include <string>

#include "host/machine/Machine.h"

namespace emstatus::host {

/// What every machine does alike: takes a request apart by the numbering and answers it from readings.
class NumberedMachine : public Machine {
 public:
  Answer Ask(const Request& request, std::chrono::milliseconds timeout) override;
  std::optional<ObjectView> Find(const ObjectAddress& address) const final;

 protected:
  virtual std::uint32_t Count(ObjectClass objectClass, std::uint32_t cabinet) const = 0;
  virtual std::optional<ObjectView> FindByIndex(const ObjectAddress& address) const = 0;
  virtual std::optional<ObjectView> FindByName(ObjectClass objectClass, std::uint32_t cabinet,
                                               const std::string& name) const = 0;
  /// Clears what the objects of a class have latched; the answer to Question::Confirm.
  virtual Answer Confirm(ObjectClass objectClass, std::uint32_t cabinet,
                         std::chrono::milliseconds timeout) = 0;

  /// The object that a request is about. Remembers the name that comes with a number from kFirstNamedObject
  /// on, so that the number alone leads to the object later.
  std::optional<ObjectView> FindAsked(const ClassRow& row, const Request& request);

 private:
  Answer AskClass(const ClassRow& row, Question question, const Request& request,
                  std::chrono::milliseconds timeout);

  mutable std::mutex namesLock_;
  // Guarded by namesLock_
  std::map<ObjectAddress, std::string> names_;
};

}  // namespace emstatus::host
