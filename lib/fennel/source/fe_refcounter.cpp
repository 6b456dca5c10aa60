#include "fe_refcounter.h"

#include <cassert>

namespace Fennel
{

RefCounter::~RefCounter()
{
    assert(mRefCount==0);
}

} // namespace Fennel
