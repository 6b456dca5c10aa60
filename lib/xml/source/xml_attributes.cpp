#include "xml_attributes.h"

#include <utility>

namespace Xml
{

namespace
{

// No tag of a show has more than six attributes; up to here a look at each is the fastest search.
const std::size_t cShortList = 16;

} // namespace

void AttributeSetter::set(std::string&& name, std::string&& value)
{
    if (XmlTag::Argument* present = find(name))
    {
        present->value = std::move(value);
        return;
    }
    if (mArguments.empty()) mArguments.reserve(4);
    if (!mIndex.empty()) mIndex.emplace(name, mArguments.size());
    mArguments.push_back({std::move(name), std::move(value)});
}

XmlTag::Argument* AttributeSetter::find(const std::string& name)
{
    if (mArguments.size() > cShortList) return findByIndex(name);
    for (XmlTag::Argument& argument : mArguments)
    {
        if (argument.name == name) return &argument;
    }
    return nullptr;
}

XmlTag::Argument* AttributeSetter::findByIndex(const std::string& name)
{
    if (mIndex.empty())
    {
        for (std::size_t i = 0; i < mArguments.size(); ++i) mIndex.emplace(mArguments[i].name, i);
    }
    const auto found = mIndex.find(name);
    return found == mIndex.end() ? nullptr : &mArguments[found->second];
}

} // namespace Xml
