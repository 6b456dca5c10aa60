#pragma once

#include <algorithm>
#include <map>
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
        int& number = mNumbers[base]; // the last one, so that many of one name do not search again and again
        while (!mTaken.insert(result).second) result = base + "." + std::to_string(number = std::max(number + 1, 2));
        return result;
    }

private:
    std::set<std::string> mTaken;
    std::map<std::string, int> mNumbers; // by name
};

} // namespace gltf
