#pragma once

#include "gr_exception.h"

namespace Fennel
{

// All failures of the renderer and its scene engine. Room for 9999 characters, since a text may name several objects.
GR_DECLARE_EXCEPTION(Exception, 10000);

} // namespace Fennel
