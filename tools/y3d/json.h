#pragma once

#include <string>

#include <nlohmann/json.hpp>

// What the commands print for programs: values in the order in which they were put in.
using Json = nlohmann::ordered_json;

// A text out of a file. Bytes that are not UTF-8 become the characters of the same numbers.
Json jsonText(const std::string& bytes);

// Prints a value to the standard output, indented by two blanks a level. Lists of floats stand on one line, and a float
// has the nine digits that tell it from its neighbours; what is no finite number is null.
void printJson(const Json& value);
