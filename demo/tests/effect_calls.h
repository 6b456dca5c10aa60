#pragma once

#include "effect_testing.h"

#include <string>

// Sets the effect up, sends it triggers and splines that none knows, which must change nothing, plays the script
// ("trigger=value; ~spline=value; @time delta position; reset") and writes down what OpenGL is asked, a line a call
// under each step. Of long frames and primitives a part is shown.
std::string listCalls(Stage& stage, Tidewheel::Effect3D& effect, const std::string& script);

// Compares the list with the one in demo/tests/calls, numbers to 4 digits or so, since mathematics libraries differ in
// the last ones. A failure shows the lines. With RENEW_CALLS in the environment the file is written instead.
void compareCalls(const std::string& name, const std::string& calls);
