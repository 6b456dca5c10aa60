#pragma once

#include "gr_exception.h"

namespace y3d
{

// What a scene file or a call of this library can go wrong with. Texts are cut at 2047 characters.
GR_DECLARE_EXCEPTION(Exception, 2048);

} // namespace y3d
