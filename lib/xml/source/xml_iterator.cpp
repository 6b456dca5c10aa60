#include "xml_iterator.h"

#include "xml_node.h"

#include <algorithm>

namespace Xml
{

namespace
{

// An Iterator is made from a node that may be changed; only the base class keeps the pointer as const.
XmlNode* changeable(const XmlNode* node)
{
    return const_cast<XmlNode*>(node);
}

} // namespace

Iterator::Iterator(XmlNode* node, const std::string& search) : IteratorConst(node, search) {}

XmlTag* Iterator::operator->() const
{
    if (mAtBegin)
    {
        throw XmlException("XmlParser::Iterator::operator->; Can't access before first element, try operator++ first!");
    }
    if (!isOnChild())
    {
        throw XmlException(
            "XmlParser::Iterator::operator->; Can't access after last element, no Tags matching searchCriteria?");
    }
    return changeable(mNode)->getChildren(mIndex);
}

XmlTag& Iterator::getRoot() const
{
    return *changeable(mNode);
}

Iterator Iterator::createIterator(const std::string& search) const
{
    return Iterator(static_cast<XmlNode*>(operator->()), search);
}

Iterator Iterator::addChild(const XmlTag& tag)
{
    mAtEnd = false;
    mAtBegin = false;
    mIndex = std::min(mIndex + 1, mNode->getNumChildren());
    return changeable(mNode)->addChild(tag, mIndex);
}

void Iterator::setRoot(const XmlTag& tag)
{
    changeable(mNode)->setTag(tag);
}

} // namespace Xml
