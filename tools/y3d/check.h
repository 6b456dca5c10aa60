#pragma once

#include <string>

#include "report.h"
#include "scenefile.h"

// Finds what the player would refuse or pass over in a file. The pictures that its materials name are looked for in the
// folder `pictures` and read; when it is empty, only their names are looked at.
Report checkFile(const SceneFile& file, const std::string& pictures);

// Prints the findings and a line that sums them up. Returns the exit status that they make.
int printReport(const Report& report, const std::string& name);

int statusOf(const Report& report);
