#pragma once

#include "xml_exception.h"
#include "xml_tag.h"

#include <string>

namespace Xml
{

class XmlNode;

// Walks the children of one node, all or those of one name. It stands before the first child when new:
//
//     IteratorConst it = node.createIterator("effect");
//     while (++it) use(it->getValue("name"));
//
// An iterator holds a pointer to its node and an index: it must not outlive the node, and sees insertions and removals
// as a shift of the index.
class IteratorConst
{
public:
    // Over the children of `node` that are named `search`; an empty `search` means every child of any kind.
    IteratorConst(const XmlNode* node, const std::string& search);

    // To the next match. False when there is none left; throws when it was false before.
    bool operator++();

    // The current child. Throws before the first step and after the last match.
    const XmlTag* operator->() const;

    bool isAtBegin() const { return mAtBegin; } // no step has been taken yet
    bool isAtEnd() const { return mAtEnd; }     // the walk has passed the last match

    // The node being walked, not the current child.
    const XmlTag& getRoot() const;

    // Over the children of the current child; throws where operator-> does.
    IteratorConst createIterator(const std::string& search) const;

    const XmlNode* mNode; // not owned
    int mIndex = -1;      // of the current child
    bool mAtEnd = false;
    bool mAtBegin = true;
    std::string mSearch;

protected:
    // The index lies on a child: false also when children were removed under the iterator.
    bool isOnChild() const;
};

} // namespace Xml
