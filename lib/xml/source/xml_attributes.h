#pragma once

#include "xml_tag.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
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

    // The value of the first attribute of this name, which is appended with an empty value if there is none. Valid
    // until the next call.
    std::string& valueOf(std::string_view name);

private:
    XmlTag::Argument* find(std::string_view name);
    XmlTag::Argument* findByIndex(std::string_view name);

    std::vector<XmlTag::Argument>& mArguments;
    std::map<std::string, std::size_t, std::less<>>
        mIndex; // of the first attribute of each name; empty while the list is short
};

} // namespace Xml
