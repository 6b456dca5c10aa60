#pragma once

#include "xml_tag.h"

#include <map>
#include <string>
#include <vector>

namespace Xml
{

// Adds many attributes to one list as XmlTag::setValue does one by one. Past a handful it keeps an index by name, so
// that a tag with a million of them does not take a search through all for each.
class AttributeSetter
{
public:
    // `arguments` must outlive the object, and only the object may change it meanwhile.
    explicit AttributeSetter(std::vector<XmlTag::Argument>& arguments) : mArguments(arguments) {}

    void set(std::string&& name, std::string&& value);

private:
    XmlTag::Argument* find(const std::string& name);
    XmlTag::Argument* findByIndex(const std::string& name);

    std::vector<XmlTag::Argument>& mArguments;
    std::map<std::string, std::size_t> mIndex; // of the first attribute of each name; empty while the list is short
};

} // namespace Xml
