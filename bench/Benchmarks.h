#pragma once

/// Each registers the variants of one task, the one that the others are compared with first. Names are
/// "TASK/VARIANT". [main thread]
namespace emstatus::bench {

void RegisterProfile();
void RegisterExport();
void RegisterTrace();
void RegisterNodeQuery();
void RegisterSensor();
void RegisterScan();

}  // namespace emstatus::bench
