#pragma once

#include "gr_exception.h"

namespace Tidewheel
{

// What the runtime and the GL check throw. 2047 characters of text fit; a longer one is cut.
GR_DECLARE_EXCEPTION(Exception, 2048);

} // namespace Tidewheel
