#pragma once

namespace AM
{
// Counts the references to one object and destroys the object with the last of them. Plain integers: every handle of
// an object stays on one thread.
template <class T> class TRefCount
{
public:
    void addRef(T*) { ++mRefCount; }

    // Returns the count that is left; at 0 pObject is gone.
    unsigned long release(T* pObject)
    {
        if (--mRefCount == 0)
        {
            delete pObject;
            return 0;
        }
        return mRefCount;
    }

    unsigned long getRef(T*) const { return mRefCount; }

    unsigned long mRefCount = 0;
};
} // namespace AM
