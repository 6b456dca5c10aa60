#include "xml_node.h"

#include "gr_pool.h"

#include <algorithm>
#include <memory>
#include <new>

namespace Xml
{

XmlNode::XmlNode(XmlNode* parent) : mParent(parent) {}

XmlNode::XmlNode(const XmlTag& tag, XmlNode* parent) : XmlTag(tag), mParent(parent) {}

XmlNode::~XmlNode()
{
    leave();
}

void* XmlNode::operator new(std::size_t size)
{
    return Pool<XmlNode>::take(size);
}

void XmlNode::operator delete(void* node, std::size_t size)
{
    Pool<XmlNode>::give(node, size);
}

void XmlNode::clear()
{
    setTag(XmlTag());
    leave();
}

// Leaves the parent and deletes the children. The tree is taken apart from the leaves up, going down and up by mParent,
// so that any depth of it costs neither stack nor memory. Last children go first: the heap gets its blocks back in the
// reverse order in which it gave them out, which leaves it in one piece.
void XmlNode::leave()
{
    if (mParent)
    {
        std::vector<XmlNode*>& siblings = mParent->mChildren;
        const auto place = std::find(siblings.begin(), siblings.end(), this);
        if (place != siblings.end()) siblings.erase(place);
        mParent = nullptr;
    }
    XmlNode* node = this;
    for (;;)
    {
        if (!node->mChildren.empty())
        {
            XmlNode* const child = node->mChildren.back();
            child->mParent = node;
            node = child;
            continue;
        }
        if (node == this) return;
        XmlNode* const parent = node->mParent;
        parent->mChildren.pop_back();
        node->mParent = nullptr;
        delete node;
        node = parent;
    }
}

Iterator XmlNode::createIterator(const std::string& search)
{
    return Iterator(this, search);
}

IteratorConst XmlNode::createIterator(const std::string& search) const
{
    return IteratorConst(this, search);
}

Iterator XmlNode::addChild(const XmlTag& tag, int index)
{
    mClosed = false;
    auto child = std::make_unique<XmlNode>(tag, this);
    const bool isInside = index >= 0 && index < getNumChildren();
    mChildren.insert(isInside ? mChildren.begin() + index : mChildren.end(), child.get());
    return Iterator(child.release(), "");
}

int XmlNode::detachChild(XmlNode* child)
{
    const auto place = std::find(mChildren.begin(), mChildren.end(), child);
    if (place == mChildren.end())
    {
        throw XmlException("detachChild(%p); No such child in '%s'", static_cast<void*>(child), mName.c_str());
    }
    const int index = static_cast<int>(place - mChildren.begin());
    mChildren.erase(place);
    child->mParent = nullptr;
    return index;
}

} // namespace Xml
