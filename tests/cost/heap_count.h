// Counts the heap allocations of this process.
#pragma once

namespace cost {

// Allocations made while counting is on. Off at first, and to stay off where there are threads.
extern unsigned long allocations;
extern bool counting;

}  // namespace cost
