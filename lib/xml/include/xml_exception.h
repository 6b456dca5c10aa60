#pragma once

#include "gr_exception.h"

namespace Xml
{

// Every failure of this library. A text longer than 2047 bytes is cut.
GR_DECLARE_EXCEPTION(XmlException, 2048);

} // namespace Xml
