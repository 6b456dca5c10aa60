#pragma once

// Trace call of load steps and warnings. The body is empty in the show: none of its texts reaches the user. Put a
// vfprintf here to follow a load.
__attribute__((format(printf, 1, 2))) inline void DEBUG_STRING(const char*, ...) {}
