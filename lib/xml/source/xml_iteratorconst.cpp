#include "xml_iteratorconst.h"

#include "xml_node.h"

namespace Xml
{

IteratorConst::IteratorConst(const XmlNode* node, const std::string& search) : mNode(node), mSearch(search) {}

bool IteratorConst::operator++()
{
    if (mAtEnd) throw XmlException("IteratorConst::operator++; Called after last tag!");
    mAtBegin = false;

    const int count = mNode->getNumChildren();
    if (mIndex + 1 >= count)
    {
        mIndex = count;
        mAtEnd = true;
        return false;
    }
    if (mSearch.empty())
    {
        ++mIndex;
        return true;
    }
    for (int index = mIndex + 1; index < count; ++index)
    {
        if (mNode->getChildren(index)->mName == mSearch)
        {
            mIndex = index;
            return true;
        }
    }
    mAtEnd = true;
    return false;
}

const XmlTag* IteratorConst::operator->() const
{
    if (mAtBegin) throw XmlException("IteratorConst::operator->; Can't access before first element!");
    if (!isOnChild()) throw XmlException("IteratorConst::operator->; Can't access after last element!");
    return mNode->getChildren(mIndex);
}

const XmlTag& IteratorConst::getRoot() const
{
    return *mNode;
}

IteratorConst IteratorConst::createIterator(const std::string& search) const
{
    return IteratorConst(static_cast<const XmlNode*>(operator->()), search);
}

bool IteratorConst::isOnChild() const
{
    return !mAtEnd && mIndex >= 0 && mIndex < mNode->getNumChildren();
}

} // namespace Xml
