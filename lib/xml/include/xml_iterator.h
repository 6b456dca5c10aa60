#pragma once

#include "xml_iteratorconst.h"

namespace Xml
{

// An IteratorConst that lets its caller change the tags and add children. It can be copied into an IteratorConst.
class Iterator : public IteratorConst
{
public:
    Iterator(XmlNode* node, const std::string& search);

    // The current child. Throws before the first step and after the last match.
    XmlTag* operator->() const;

    // The node being walked, not the current child.
    XmlTag& getRoot() const;

    // Over the children of the current child; throws where operator-> does.
    Iterator createIterator(const std::string& search) const;

    // Inserts a copy of `tag` behind the current child, or as the first if no step was taken, and moves onto it: calls
    // in sequence build children in call order, ahead of those that were there before a fresh iterator. Behind the end
    // of the list it appends. Returns an iterator over the new child's own children.
    Iterator addChild(const XmlTag& tag);

    // Copies `tag` into the node being walked; its children stay.
    void setRoot(const XmlTag& tag);
};

} // namespace Xml
