#pragma once

#include <set>
#include <string>

namespace gltf
{

// Names of one kind of object, of which each goes to one object only.
class Names
{
public:
    // The name itself, or one with a number behind it where the name is taken; `fallback` where there is none. A text
    // of a Y3D file ends at its first 0 byte, so it is cut there.
    std::string claim(const std::string& name, const std::string& fallback)
    {
        const std::string text = name.c_str();
        const std::string base = text.empty() ? fallback : text;
        std::string result = base;
        for (int number = 2; !mTaken.insert(result).second; ++number) result = base + "." + std::to_string(number);
        return result;
    }

private:
    std::set<std::string> mTaken;
};

} // namespace gltf
