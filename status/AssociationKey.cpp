#include "status/AssociationKey.h"

#include <array>
#include <cstdio>
#include <utility>

#include "status/HostQuery.h"

namespace emstatus {
namespace {

std::string Part(const char* format, std::uint32_t value) {
  char text[32];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

std::string TriqKey(const Element& request, std::optional<std::uint32_t> instanceIndex,
                    std::optional<std::uint32_t> cabinet) {
  const std::array<std::optional<std::uint32_t>, 3> parts = {
      instanceIndex ? instanceIndex : HexAttribute(request, "OI"), HexAttribute(request, "OE"), cabinet};
  std::string key = Part("TRIQ:%04X", HexAttribute(request, "OC").value_or(0));
  std::string skipped;
  for (const auto& part : parts) {
    if (part) {
      key += std::exchange(skipped, {}) + Part("-%04X", *part);
    } else {
      skipped += "-0000";
    }
  }
  return key;
}

/// The object id, its "%d" replaced by the index of the instance.
std::string SnmpKey(const Element& request, std::optional<std::uint32_t> instanceIndex) {
  std::string oid(request.Attribute("OID"));
  const std::size_t conversion = oid.find("%d");
  if (instanceIndex && conversion != std::string::npos) {
    oid.replace(conversion, 2, std::to_string(*instanceIndex));
  }
  return "SNMP:" + oid;
}

}  // namespace

std::string MakeAssociationKey(const ComponentDefinition& component,
                               std::optional<std::uint32_t> instanceIndex, std::uint32_t cabinet,
                               std::uint32_t serverCabinet) {
  const Element& request = component.statusRequest.command;
  switch (component.queryContext) {
    case QueryContext::Triq:
      return TriqKey(request, instanceIndex,
                     cabinet == serverCabinet ? std::nullopt : std::optional(cabinet));
    case QueryContext::Snmp:
      return SnmpKey(request, instanceIndex);
    case QueryContext::None:
      break;
  }
  return {};
}

}  // namespace emstatus
