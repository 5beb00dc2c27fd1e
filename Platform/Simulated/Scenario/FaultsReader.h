#pragma once

#include "Platform/Simulated/Scenario/Faults.h"
#include "Platform/Simulated/Scenario/JsonObjectReader.h"

namespace Platform::Simulated {

/// Where in a scenario a list of faults stands; each place has operations of its own.
enum class FaultPlace { Top, Group, Camera };

/// Raises for an operation that does not belong to the place.
Faults readFaults(const JsonPlace& json, FaultPlace place);

} // namespace Platform::Simulated
