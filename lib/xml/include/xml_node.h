#pragma once

#include "xml_iterator.h"
#include "xml_iteratorconst.h"
#include "xml_tag.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Xml
{

// A tag with its children. A node owns its children; trees may be of any depth, no operation recurses.
class XmlNode : public XmlTag
{
public:
    // `parent` is stored only, and must outlive the node: XmlNode::addChild is what enters a node into a parent's list.
    explicit XmlNode(XmlNode* parent);
    XmlNode(const XmlTag& tag, XmlNode* parent);
    XmlNode(const XmlNode&) = delete;
    XmlNode& operator=(const XmlNode&) = delete;
    ~XmlNode();

    // Nodes come from a pool.
    static void* operator new(std::size_t size);
    static void operator delete(void* node, std::size_t size);

    // Resets the tag to its defaults, leaves the parent if there is one, in whose list the node need not be, and
    // deletes all children.
    void clear();

    // Over the children named `search`, or all of them for the empty string.
    Iterator createIterator(const std::string& search);
    IteratorConst createIterator(const std::string& search) const;

    const XmlTag& getTag() const { return *this; }
    XmlTag& getTag() { return *this; }

    int getNumChildren() const { return static_cast<int>(mChildren.size()); }

    // `index` must lie within 0 to getNumChildren() - 1.
    XmlNode* getChildren(int index) { return mChildren[static_cast<std::size_t>(index)]; }
    const XmlNode* getChildren(int index) const { return mChildren[static_cast<std::size_t>(index)]; }

    // Inserts a copy of `tag` before the child at `index`; -1, the number of children, and any index outside the list
    // append. This node is not closed from then on. Returns an iterator over the new child's own children.
    Iterator addChild(const XmlTag& tag, int index);

    // Takes `child` out of the list and returns its former index. The caller owns it then, and it has no parent.
    // Throws if it is not a child of this node.
    int detachChild(XmlNode* child);

    std::vector<XmlNode*> mChildren; // owned, in document order
    XmlNode* mParent;                // not owned, null for a root

private:
    void leave();
};

} // namespace Xml
