#pragma once

namespace emstatus::fuzz {

/// Subsystems with one component for each way in which the scan asks its host.
inline constexpr const char* kHostileConfiguration = R"([Info]
Filename=EM_STATUS.ini
LayoutVersion=4
[Configuration]
InitialPollingDelaySeconds=0
PollingRateSeconds=0
AdvancedPollingRateSeconds=0
AdvancedPollingCycles=2
StatusValueQueryFail=3
[StatusMapping]
Unknown=0
OK=1
Warning=2
Error=3
Four=4
Five=5
Inert=200
[System]
DisplayName=System
Subsystems=S1 S2
[Subsystem.S1]
DisplayName=First
Components=LEAF ROW CABINETS
[Subsystem.S2]
DisplayName=Second
Components=S2 ALT FIXED IDLE
[Component.LEAF]
DisplayNameRequest=<CMD Context="TRIQ" OC="101"/>
StatusRequest=<CMD Context="TRIQ" OC="102" OE="1" OI="2"/>
CssRequest=<CMD Context="TRIQ" OC="103"/>
RedundancyRequest=<CMD Context="TRIQ" OC="104"/>
StatusConfirm=<CMD Context="TRIQ" OC="105"><DATA Type="int">-1</DATA></CMD>
Category=Mandatory
Status.1=OK 0
Status.2=Warning 1
Status.3=Error 2
Status.4=Four 3
Status.5=Five 4
Status.6=Inert 5
Redundancy.1=1 1
[Component.ROW]
DisplayName=Row
InstanceName=R
InstanceBaseIndex=255
NrInstancesRequest=<CMD Context="TRIQ" OC="106"/>
StatusRequest=<CMD Context="TRIQ" OC="107"/>
DesignationRequest=<CMD Context="TRIQ" OC="108"><DATA Type="string">name</DATA></CMD>
CssRequest=<CMD Context="TRIQ" OC="109"/>
TargetHostRequest=<CMD Context="TRIQ" OC="10A"/>
Status.1=OK 0
Status.2=Error 1
Status.3=Warning *
[Component.CABINETS]
DisplayName=Cabinets
HandleCabinets=1
NrInstancesRequest=<CMD Context="TRIQ" OC="10B"/>
StatusRequest=<CMD Context="TRIQ" OC="10C"/>
RedundancyRequest=<CMD Context="TRIQ" OC="10D"/>
Status.1=OK 0
Status.2=Error 1
Redundancy.1=2 1
[Component.S2]
DisplayName=Named as its subsystem
Category=Redundant
StatusRequest=<CMD Context="TRIQ" OC="10E"/>
Status.1=OK 0
[Component.ALT]
DisplayName=Alternative
StatusRequest=<CMD Context="TRIQ" OC="10F"/>
Status.1=OK 0
[Component.ALT.alt]
DisplayName=Is asked instead
NrInstancesRequest=<CMD Context="TRIQ" OC="110"/>
StatusRequest=<CMD Context="TRIQ" OC="111"/>
Status.1=Five 0
[Component.FIXED]
DisplayName=Fixed
HandleCabinets=1
NrInstances=3
StatusRequest=<CMD Context="TRIQ" OC="112" CA="5"/>
CssRequest=<CMD Context="TRIQ" OC="113"/>
Status.1=OK 0
Status.2=Error 2
[Component.IDLE]
DisplayName=Inactive
Category=Inactive
StatusRequest=<CMD Context="TRIQ" OC="114"/>
Status.1=OK 0
)";

}  // namespace emstatus::fuzz
