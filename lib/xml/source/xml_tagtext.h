#pragma once

#include "xml_tag.h"

#include <string>

namespace Xml
{

// Appends the text of `tag` with its newline to `text`, as XmlTag::write does for a stream.
void appendTag(std::string& text, const XmlTag& tag, bool selfClose);

} // namespace Xml
