#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "host/providers/Reading.h"

/// The numbers in which the module asks and is answered (docs/HOST.md), and their words. Each fact stands in
/// one row of one table. [any thread]
namespace emstatus::host {

/// What a request asks about an object or a class ("OE").
enum class Question : std::uint16_t {
  Count = 0x0001,
  State = 0x0002,
  Name = 0x0003,
  ReadingText = 0x0004,
  Value = 0x0005,
  CustomerServiceable = 0x0006,
  Redundancy = 0x0007,
  Confirm = 0x0008,
  Quality = 0x0009,
  Reason = 0x000A,
  Age = 0x000B,
  ClassName = 0x000C,
  StateAbove = 0x000D,
  StateBelow = 0x000E,
  Advice = 0x000F,
};

/// The raw state of an object, as Question::State is answered: the condition while the quality is good, the
/// quality otherwise. A configuration maps both.
enum class RawState : std::uint32_t {
  Good = 0,
  Warning = 1,
  Failed = 2,
  Late = 10,
  SensorFault = 11,
  Implausible = 12,
  Inactive = 13,
  Lost = 14,
};

/// Answer to Question::Redundancy.
enum class RedundancyState : std::uint32_t {
  /// The object belongs to no group.
  None = 0,
  /// Every member of the group works.
  Full = 1,
  /// Members are missing; those that are left do the group's work.
  Reduced = 2,
  /// Fewer are left than are needed.
  Insufficient = 3,
};

/// Status of an answer ("ST").
enum class AnswerStatus : std::uint32_t {
  Success = 0,
  NotSupported = 1,
  NotFound = 2,
  Failed = 6,
};

/// From this object number on ("OI"), the object is the one that the request's data names.
inline constexpr std::uint32_t kFirstNamedObject = 0xFF00;
inline constexpr std::uint32_t kLastNamedObject = 0xFFFF;

struct ClassRow {
  ObjectClass objectClass;
  /// In files and options ("power-supply").
  std::string_view word;
  /// For people, of all its objects ("Power supplies").
  std::string_view title;
  /// Number of the first object: 1 where the parts are counted from 1 on their labels.
  std::uint32_t firstIndex;
};

std::span<const ClassRow> Classes();
/// Null for a number that is no class.
const ClassRow* FindClass(std::uint32_t number);
const ClassRow* FindClass(std::string_view word);
const ClassRow& RowOf(ObjectClass objectClass);

std::optional<Question> FindQuestion(std::uint32_t number);
std::optional<Question> FindQuestion(std::string_view word);
std::string_view WordOf(Question question);

RawState RawStateOf(const Reading& reading);
RedundancyState RedundancyStateOf(const Reading& reading);

std::string_view WordOf(Condition condition);
std::string_view WordOf(Quality quality);
std::string_view WordOf(RedundancyState state);
std::optional<Condition> FindCondition(std::string_view word);
std::optional<Quality> FindQuality(std::string_view word);

/// As printed behind a value ("RPM", "°C"), and the unit so printed.
std::string_view SymbolOf(Unit unit);
std::optional<Unit> FindUnit(std::string_view symbol);

}  // namespace emstatus::host
