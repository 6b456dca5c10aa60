#pragma once

// The names in "greets.png", one row under the other.

const int GREETING_ROWS = 16;
const char* const GREETING_NAMES[GREETING_ROWS] = {"lanterns",  "mirth",      "sprout",       "crane",
                                                   "thicket",   "tundrans",   "paper mangle", "ironbloom",
                                                   "windmills", "rainglass",  "hxq",          "analogue harvest",
                                                   "qvr",       "moonferric", "gravel",       "drovers"};
