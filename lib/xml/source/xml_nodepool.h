#pragma once

namespace Xml
{

// Memory for nodes. A document is built in one go and mostly freed in one go: nodes are cut off a block one behind the
// other, and a block returns to the heap when its last node is gone. That saves half of the heap's work for a document.
class NodePool
{
public:
    // Room for one XmlNode. Throws std::bad_alloc.
    static void* take();

    // Takes back what take() gave; null is allowed.
    static void give(void* node);
};

} // namespace Xml
