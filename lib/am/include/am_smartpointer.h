#pragma once

#include <cassert>
#include <cstddef>

#include "am_reference_counter.h"

namespace AM
{
// A shared pointer whose count lives beside the object, in a record that all copies share; the null pointer has no
// record. It is one word wide and converts to the raw pointer.
template <class T, class Counter = TRefCount<T>> class TSmartPtr
{
public:
    // What the handles of one object share.
    struct PtrRef
    {
        T* mObject;
        Counter mCounter;
    };

    TSmartPtr(T* pObject = nullptr) : mObjectRef(nullptr) { attach(pObject); }

    TSmartPtr(const TSmartPtr& pOther) : mObjectRef(nullptr) { share(pOther.mObjectRef); }

    ~TSmartPtr() { release(); }

    TSmartPtr& operator=(const TSmartPtr& pOther)
    {
        if (mObjectRef != pOther.mObjectRef)
        {
            release();
            share(pOther.mObjectRef);
        }
        return *this;
    }

    // Takes ownership of pObject. Assigning the object that is held already changes nothing.
    TSmartPtr& operator=(const T* pObject)
    {
        if (isNull() || pObject != mObjectRef->mObject) attach(pObject);
        return *this;
    }

    // Lets go of what was held and owns pObject from here on, with a count of 1; null gives a null pointer.
    void attach(const T* pObject)
    {
        release();
        if (!pObject) return;
        T* object = const_cast<T*>(pObject);
        try
        {
            mObjectRef = new PtrRef{object, Counter()};
        }
        catch (...)
        {
            delete object;
            throw;
        }
        mObjectRef->mCounter.addRef(object);
    }

    void release()
    {
        PtrRef* reference = mObjectRef;
        mObjectRef = nullptr;
        if (reference && reference->mCounter.release(reference->mObject) == 0) delete reference;
    }

    bool isNull() const { return !mObjectRef; }
    T* getObject() const { return mObjectRef ? mObjectRef->mObject : nullptr; }
    unsigned long getRefCount() const { return mObjectRef ? mObjectRef->mCounter.getRef(mObjectRef->mObject) : 0; }

    T* operator->() const
    {
        assert(!isNull());
        return mObjectRef->mObject;
    }

    T& operator*() const
    {
        assert(!isNull());
        return *mObjectRef->mObject;
    }

    // The overloads beside the first keep the conversions below from making a comparison ambiguous.
    bool operator==(const T* pObject) const { return getObject() == pObject; }
    bool operator==(T* pObject) const { return getObject() == pObject; }
    bool operator==(std::nullptr_t) const { return isNull(); }
    bool operator==(const TSmartPtr& pOther) const { return mObjectRef == pOther.mObjectRef; }
    bool operator!=(const TSmartPtr& pOther) const { return mObjectRef != pOther.mObjectRef; }

    operator T*() const { return getObject(); }
    operator unsigned long() const { return mObjectID; }

    union {
        PtrRef* mObjectRef;      // null for the null pointer
        unsigned long mObjectID; // the same word as a number
    };

private:
    void share(PtrRef* reference)
    {
        mObjectRef = reference;
        if (reference) reference->mCounter.addRef(reference->mObject);
    }

    static_assert(sizeof(PtrRef*) == sizeof(unsigned long), "the number must hold the pointer");
};
} // namespace AM
