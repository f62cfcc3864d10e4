#include "host/providers/Lateness.h"

#include "host/providers/ReadFault.h"
#include "host/providers/ValueText.h"

namespace emstatus::host {

void SetLate(Reading& reading, std::chrono::steady_clock::duration silence) {
  SetUnknown(reading, Quality::Late,
             "no answer for " + SpanText(std::chrono::duration<double>(silence).count()) +
                 "; the device or its driver may hang");
}

Reading SilentReading(ObjectClass objectClass, const std::string& name,
                      std::chrono::steady_clock::duration silence) {
  Reading reading;
  reading.objectClass = objectClass;
  reading.id = reading.name = name;
  reading.mayGo = true;
  SetLate(reading, silence);
  return reading;
}

void SetAge(std::vector<Reading>& readings, std::chrono::steady_clock::time_point takenAt,
            std::chrono::steady_clock::time_point now, std::chrono::milliseconds lateAfter) {
  for (Reading& reading : readings) {
    reading.takenAt = takenAt;
    if (now - takenAt >= lateAfter) {
      SetLate(reading, now - takenAt);
    }
  }
}

}  // namespace emstatus::host
