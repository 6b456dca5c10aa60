#pragma once

#include <string>

#include "mb_aabbpointsf.h"

// Numbers, names and counts as the tool shows them to a person.

// The length of the UTF-8 character that begins at `position`, or 0 when there is none. Surrogates and overlong forms
// are none.
std::size_t utf8Length(const std::string& text, std::size_t position);

// A name out of a file between quotes, cut after 100 bytes; what a terminal could take for a command is written as
// \xNN.
std::string quoted(const std::string& name);

std::string shown(float value);                        // 0.25
std::string shown(const MathBase::Vector3f& value);    // (1, 2, 3)
std::string shown(const MathBase::AABBpointsf& value); // (0, 0, 0) to (1, 1, 1)

// "1 mesh", "2 meshes".
std::string counted(std::size_t number, const char* one, const char* many);
