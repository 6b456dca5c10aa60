#include "xml_attributes.h"

namespace Xml
{

namespace
{

// No tag of a show has more than six attributes; up to here a look at each is the fastest search.
const std::size_t SHORT_LIST = 16;

// Three is what most tags have.
const std::size_t FIRST_ROOM = 3;

} // namespace

std::string& AttributeSetter::valueOf(std::string_view name)
{
    if (XmlTag::Argument* present = find(name)) return present->value;
    if (mArguments.capacity() == 0) mArguments.reserve(FIRST_ROOM);
    if (!mIndex.empty()) mIndex.emplace(name, mArguments.size());
    mArguments.push_back({std::string(name), std::string()});
    return mArguments.back().value;
}

XmlTag::Argument* AttributeSetter::find(std::string_view name)
{
    if (mArguments.size() > SHORT_LIST) return findByIndex(name);
    for (XmlTag::Argument& argument : mArguments)
    {
        if (argument.name == name) return &argument;
    }
    return nullptr;
}

XmlTag::Argument* AttributeSetter::findByIndex(std::string_view name)
{
    if (mIndex.empty())
    {
        for (std::size_t i = 0; i < mArguments.size(); ++i) mIndex.emplace(mArguments[i].name, i);
    }
    const auto found = mIndex.find(name);
    return found == mIndex.end() ? nullptr : &mArguments[found->second];
}

} // namespace Xml
