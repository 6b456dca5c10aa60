#include "xml_testing.h"

#include <gtest/gtest.h>

using Xml::Iterator;
using Xml::IteratorConst;
using Xml::XmlNode;
using Xml::XmlTag;

namespace
{

XmlTag named(const std::string& name)
{
    XmlTag tag;
    tag.setName(name);
    return tag;
}

std::string childNames(const XmlNode& node)
{
    std::string names;
    for (int i = 0; i < node.getNumChildren(); ++i) names += node.getChildren(i)->mName + " ";
    return names;
}

} // namespace

TEST(XmlNode, addChildInsertsAtTheIndexOrAppends)
{
    XmlNode node(nullptr);
    EXPECT_TRUE(node.mClosed);
    node.addChild(named("b"), -1);
    EXPECT_FALSE(node.mClosed);
    node.addChild(named("d"), 1);
    node.addChild(named("c"), 1);
    Iterator under = node.addChild(named("a"), 0);
    node.addChild(named("e"), 1000); // past the end
    EXPECT_EQ(childNames(node), "a b c d e ");
    EXPECT_EQ(under.getRoot().mName, "a");
    EXPECT_EQ(node.getChildren(2)->mParent, &node);
}

TEST(XmlNode, detachGivesTheChildAway)
{
    XmlNode node(named("n"), nullptr);
    for (const char* name : {"a", "b", "c"}) node.addChild(named(name), -1);
    const std::unique_ptr<XmlNode> child(node.getChildren(1));
    EXPECT_EQ(node.detachChild(child.get()), 1);
    EXPECT_EQ(childNames(node), "a c ");
    EXPECT_EQ(child->mParent, nullptr);
    EXPECT_EQ(messageOf([&] { node.detachChild(nullptr); }), "detachChild((nil)); No such child in 'n'");
    node.setName(std::string(5000, 'n'));
    EXPECT_EQ(messageOf([&] { node.detachChild(nullptr); }).size(), 2047u);
}

TEST(XmlNode, clearLeavesTheParentAndResetsTheTag)
{
    XmlNode node(named("n"), nullptr);
    node.addChild(named("a"), -1).addChild(named("b"));
    const std::unique_ptr<XmlNode> child(node.getChildren(0));
    child->clear();
    EXPECT_EQ(childNames(node) + childNames(*child) + child->mName, "");
    EXPECT_TRUE(child->mClosed);

    // A parent that does not hold it stays as it is.
    node.addChild(named("a"), -1);
    XmlNode stranger(named("b"), &node);
    stranger.clear();
    EXPECT_EQ(stranger.mParent, nullptr);
    stranger.mParent = &node; // for the destructor
    EXPECT_EQ(childNames(node), "a ");
}

TEST(Iterator, walksMatchesOnceAndThrowsAfterwards)
{
    Xml::XmlParser parser;
    parser.parse("<r><a n=1/>text<b n=2/><!--c--><a n=3><b n=4/></a></r>");
    Iterator it = parser.createIterator("a");
    EXPECT_TRUE(it.isAtBegin());
    EXPECT_EQ(messageOf([&] { it->getValue("n"); }),
              "XmlParser::Iterator::operator->; Can't access before first element, try operator++ first!");
    EXPECT_TRUE(++it);
    EXPECT_EQ(it->getValue("n"), "1");
    EXPECT_TRUE(++it);
    Iterator under = it.createIterator("b");
    EXPECT_TRUE(++under);
    EXPECT_EQ(under->getValue("n") + under.getRoot().getValue("n"), "43");
    EXPECT_FALSE(++it);
    EXPECT_TRUE(it.isAtEnd());
    EXPECT_EQ(messageOf([&] { ++it; }), "IteratorConst::operator++; Called after last tag!");
    EXPECT_EQ(messageOf([&] { it->getValue("n"); }),
              "XmlParser::Iterator::operator->; Can't access after last element, no Tags matching searchCriteria?");

    IteratorConst all = parser.createIterator(""), none = parser.createIterator("c");
    EXPECT_EQ(messageOf([&] { all->getValue("n"); }), "IteratorConst::operator->; Can't access before first element!");
    std::string names;
    while (++all) names += all->mName + " ";
    EXPECT_EQ(names, "a !!!text b COMMENT a ");
    EXPECT_EQ(messageOf([&] { all->getValue("n"); }), "IteratorConst::operator->; Can't access after last element!");
    EXPECT_FALSE(++none);
    EXPECT_EQ(none.mIndex, -1);
}

TEST(Iterator, addChildBuildsInCallOrderAheadOfWhatWasThere)
{
    XmlNode node(nullptr);
    node.addChild(named("old"), -1);
    Iterator it = node.createIterator("");
    Iterator under = it.addChild(named("a"));
    it.addChild(named("b"));
    under.addChild(named("a1"));
    under.addChild(named("a2"));
    EXPECT_EQ(childNames(node), "a b old ");
    EXPECT_EQ(childNames(*node.getChildren(0)), "a1 a2 ");
    EXPECT_EQ(it->mName, "b");

    while (++it) continue;
    it.addChild(named("last"));
    EXPECT_EQ(childNames(node), "a b old last ");
    EXPECT_EQ(it->mName, "last");
    delete node.getChildren(3); // an iterator whose child went away is behind the end
    EXPECT_NE(messageOf([&] { it->getValue("n"); }), "");
}
