#pragma once

// Blocks that the program has taken from the heap with new since it began. Whoever links `heapcounter` has its new and
// delete in place of the standard library's.
extern long heapAllocations;
