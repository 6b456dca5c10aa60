#pragma once

#include <cassert>

namespace Fennel
{

// Root of what handles share. The handles do the counting; the last one deletes the object.
class RefCounter
{
public:
    RefCounter() {}
    RefCounter(const RefCounter&) = delete;
    RefCounter& operator=(const RefCounter&) = delete;
    virtual ~RefCounter() = 0;

    unsigned int mRefCount = 0; // handles on this object; 0 again when it dies
};

inline RefCounter::~RefCounter()
{
    assert(mRefCount==0);
}

} // namespace Fennel
