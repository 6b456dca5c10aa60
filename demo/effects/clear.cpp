#include "clear.h"

#include "tw_glinclude.h"

#include <cstdlib>

namespace
{

// The three digits from `start` on as a share of 255. A text that ends before `start` is out of range.
float readComponent(const std::string& digits, std::string::size_type start)
{
    return static_cast<float>(std::strtol(digits.substr(start, 3).c_str(), nullptr, 10)) / 255;
}

} // namespace

void Clear::executeTrigger(float, const std::string& name, const std::string& value)
{
    if (name != "color") return;
    mR = readComponent(value, 0);
    mG = readComponent(value, 3);
    mB = readComponent(value, 6);
}

void Clear::update(float, float, float)
{
    GL_CHECKED(glClearColor(mR, mG, mB, 1));
    GL_CHECKED(glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT));
}
