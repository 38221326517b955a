// What faults do to the bytes of a frame.
#pragma once

#include <vector>

#include "simulation/fault_plan.h"

namespace simulation {

using FrameOnLine = std::vector<unsigned char>;

// Both leave a frame alone that the fault does not concern.
void SpoilRequest(const Fault& fault, FrameOnLine& frame);
void SpoilAnswer(const Fault& fault, FrameOnLine& frame);

}  // namespace simulation
