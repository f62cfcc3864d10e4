#include "status/HostQuery.h"

#include <cstdlib>

#include "data/CommandReply.h"
#include "data/JsonWriter.h"
#include "data/OwnedCommand.h"
#include "platform/CDebugClient.h"
#include "status/HostLink.h"

namespace emstatus {
namespace {

/// An integer in C notation: "0x" hexadecimal, a leading "0" octal, otherwise decimal.
std::int64_t PrefixedInteger(const std::string& text) {
  if (text.starts_with("0x") || text.starts_with("0X")) return std::strtoll(text.c_str(), nullptr, 16);
  return std::strtoll(text.c_str(), nullptr, text.starts_with('0') ? 8 : 10);
}

bool IsExecutable(const RequestRecord& request) {
  const Element& element = request.command;
  if (element.name != "CMD") {
    EM_TRACE(
        1,
        "\nEM_STATUS (QUERY)   : ## FATAL ERROR: Current tag name is wrong of not available (should be \"%s\", is \"%s\") - fix this!!",
        "CMD", element.name.c_str());
    return false;
  }
  const std::string context(element.Attribute("Context"));
  if (context != "TRIQ") {
    EM_TRACE(1, "\nEM_STATUS (QUERY)   : ## ERROR: Unhandled value request type \"%s\" - fix this!!",
             context.c_str());
    return false;
  }
  return true;
}

void AddRequestData(const RequestRecord& request, OwnedCommand& command) {
  const Element* data = request.command.Child("DATA");
  if (data == nullptr) return;
  const std::string content = data->text;
  if (content.find('%') != std::string::npos) {
    EM_TRACE(
        1,
        "\n\nEM_STATUS (QUERY)   : ## FATAL ERROR: TRIQ request data still contains variable placefolders at request time - fix this!! (%s)",
        request.text.c_str());
  }
  const std::string_view type = data->Attribute("Type");
  if (type == "int") {
    command.AddData(OwnedValue::Integer(PrefixedInteger(content)));
  } else if (type == "string") {
    command.AddData(OwnedValue::Text(content));
  } else {
    EM_TRACE(
        1,
        "\n\nEM_STATUS (QUERY)   : ## ERROR: No or unhandled request data type in TRIQ request - fix this!! (%s)",
        request.text.c_str());
  }
}

}  // namespace

std::optional<std::uint32_t> HexAttribute(const Element& request, std::string_view name) {
  const std::string* text = request.FindAttribute(name);
  if (text == nullptr) return std::nullopt;
  return static_cast<std::uint32_t>(std::strtol(text->c_str(), nullptr, 16));
}

std::optional<HostQuery::Result> HostQuery::ExecuteQuery(const RequestRecord& request,
                                                         const QueryTarget& target) const {
  if (!IsExecutable(request)) return std::nullopt;
  EM_TRACE(4, "\nEM_STATUS (QUERY)   : TRIQ query: %s", request.text.c_str());
  const auto number = [&request](const char* name, std::uint32_t replacement, std::uint32_t missing) {
    if (replacement != QueryTarget::kAsRequested) return replacement;
    return HexAttribute(request.command, name).value_or(missing);
  };
  OwnedCommand command({.operation = number("OC", QueryTarget::kAsRequested, 0),
                        .extension = number("OE", QueryTarget::kAsRequested, 0),
                        .object = number("OI", target.objectIndex, 0),
                        .cabinet = number("CA", target.cabinet, host_.ServerCabinet())});
  AddRequestData(request, command);

  host_.SendRequest(command);
  EM_TRACE(4, "\nEM_STATUS (QUERY)   : TRIQ query result: %s", JsonText(command.document).c_str());
  Reply reply = ReadReply(command);
  if (!reply.completed) {
    EM_TRACE(4, "\nEM_STATUS (QUERY)   :   TRIQ query unsuccessful - command status = 0x%02X", reply.status);
    return std::nullopt;
  }
  if (reply.number) {
    EM_TRACE(4, "\nEM_STATUS (QUERY)   :   TRIQ query successful, result value = %d", *reply.number);
    return Result{.isNumber = true, .value = *reply.number, .text = {}};
  }
  if (reply.text) {
    EM_TRACE(4, "\nEM_STATUS (QUERY)   :   TRIQ query successful, result string = \"%s\"",
             reply.text->c_str());
    return Result{.isNumber = false, .value = 0, .text = std::move(*reply.text)};
  }
  EM_TRACE(
      4,
      "\nEM_STATUS (QUERY)   :   TRIQ query unsuccessful - unexpected data type (not a string or integer)");
  return std::nullopt;
}

std::optional<std::string> HostQuery::QueryString(const RequestRecord& request,
                                                  const QueryTarget& target) const {
  auto result = ExecuteQuery(request, target);
  if (!result || result->isNumber) return std::nullopt;
  return std::move(result->text);
}

std::optional<std::int32_t> HostQuery::QueryInteger(const RequestRecord& request,
                                                    const QueryTarget& target) const {
  const auto result = ExecuteQuery(request, target);
  if (!result || !result->isNumber) return std::nullopt;
  return result->value;
}

std::optional<HostQuery::Status> HostQuery::QueryStatus(const RequestRecord& request,
                                                        const QueryTarget& target) const {
  const auto value = QueryInteger(request, target);
  if (!value) return std::nullopt;
  return Status{.value = *value, .repeat = false};
}

bool HostQuery::QueryCommand(const RequestRecord& request) const {
  return ExecuteQuery(request, {.objectIndex = 0}).has_value();
}

}  // namespace emstatus
