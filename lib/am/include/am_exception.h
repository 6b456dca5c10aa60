#pragma once

#include "gr_exception.h"

namespace AM
{
// What all failures of the asset library are thrown as.
GR_DECLARE_EXCEPTION(Exception, 2048);
} // namespace AM
