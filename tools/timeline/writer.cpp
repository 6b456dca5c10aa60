#include "writer.h"

#include "edits.h"
#include "match.h"
#include "numbers.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace Timeline
{

namespace
{

// An attribute with the number that it means when it is missing; those are left out.
struct HouseAttribute
{
    const char* name;
    bool isNumber;
    const char* standard; // null for one that is always written
};

const std::map<std::string, std::vector<HouseAttribute>> HOUSE = {
    {"effect", {{"name", false, nullptr}, {"state", false, "on"}, {"start", true, nullptr}, {"end", true, nullptr}}},
    {"trigger",
     {{"start", true, nullptr},
      {"name", false, nullptr},
      {"value", false, nullptr},
      {"repeat", false, "1"},
      {"delay", true, nullptr}}},
    {"spline",
     {{"name", false, nullptr},
      {"type", false, nullptr},
      {"timescale", true, "1"},
      {"timeoffset", true, "0"},
      {"valuescale", true, "1"},
      {"valueoffset", true, "0"}}},
    {"key", {{"time", true, nullptr}, {"value", true, nullptr}}},
};

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// What another document adds to the one being written, by the latter's nodes.
struct Additions
{
    const Document* document = nullptr;
    std::map<const Node*, const Node*> verbatim;            // stands in the place of this one
    std::map<const Node*, std::vector<const Node*>> before; // comments ahead of it
    std::map<const Node*, std::vector<const Node*>> behind; // on its line, or the first in it
    std::map<const Node*, std::vector<const Node*>> last;   // at the end of what lies in it
};

class Writer
{
public:
    Writer(const Document& document, const Additions* additions) : mDocument(document), mAdditions(additions) {}

    std::string write()
    {
        for (const std::unique_ptr<Node>& node : mDocument.prolog()) writeNode(mDocument, *node, 0, false);
        writeNode(mDocument, mDocument.root(), 0, false);
        std::string tail(mDocument.bytes({mDocument.root().span().end, mDocument.text().size()}));
        if (tail.find_first_not_of(" \t\r\n") != std::string::npos)
            mText += tail;
        else
            mText += "\n";
        return mDocument.withLineEnds(mText);
    }

private:
    // `sameLine`: it follows what was written last without a line end.
    void writeNode(const Document& document, const Node& node, int depth, bool sameLine)
    {
        if (&document == &mDocument) addAll(node, depth, &Additions::before);
        const Node* const old = &document == &mDocument ? replacement(node) : nullptr;
        startLine(old ? *mAdditions->document : document, old ? *old : node, depth, sameLine);
        if (old)
            mText.append(mAdditions->document->bytes(old->span()));
        else if (node.kind == Node::Kind::COMMENT)
            mText += moved(document, node);
        else if (node.kind == Node::Kind::TEXT)
            mText += trimmed(document.bytes(node.open));
        else if (node.kind == Node::Kind::OTHER)
            mText.append(document.bytes(node.open));
        else if (node.name.empty())
            mText.append(document.bytes(node.span())); // written anew, its first attribute would become its name
        else
            writeTag(document, node, depth);
        if (old) addAll(node, depth, &Additions::behind);
    }

    void writeTag(const Document& document, const Node& node, int depth)
    {
        mText += "<" + node.name;
        writeAttributes(node);
        const bool isRoot = depth == 0;
        if (node.children.empty() && !isRoot && !hasAddition(node, &Additions::last))
        {
            mText += "/>";
            addAll(node, depth, &Additions::behind);
            return;
        }
        mText += ">";
        addAll(node, depth, &Additions::behind);
        const Node* before = nullptr;
        for (const std::unique_ptr<Node>& child : node.children)
        {
            const std::size_t from = before ? before->span().end : node.open.end;
            const bool isBehind = child->kind != Node::Kind::TAG && isOneLine(document, from, child->open.begin);
            writeNode(document, *child, depth + 1, isBehind);
            before = child.get();
        }
        addAll(node, depth + 1, &Additions::last);
        mText += "\n" + std::string(static_cast<std::size_t>(depth), '\t') + "</" + node.name + ">";
    }

    void writeAttributes(const Node& node)
    {
        const auto house = HOUSE.find(node.name);
        std::vector<std::string> done;
        if (house != HOUSE.end())
            for (const HouseAttribute& attribute : house->second)
            {
                done.push_back(attribute.name);
                const Attribute* found = node.find(attribute.name);
                if (found && isWritten(node, attribute, found->value))
                    mText += " " + writeAttribute(attribute, found->value);
            }
        for (const Attribute& attribute : node.attributes)
            if (std::count(done.begin(), done.end(), attribute.name) == 0)
                mText += " " + Timeline::writeAttribute(attribute.name, attribute.value);
    }

    static std::string writeAttribute(const HouseAttribute& attribute, const std::string& value)
    {
        const bool isShort = attribute.isNumber && isNumber(value);
        return Timeline::writeAttribute(attribute.name, isShort ? shortest(readFloat(value)) : value);
    }

    static bool isWritten(const Node& node, const HouseAttribute& attribute, const std::string& value)
    {
        const std::string name = attribute.name;
        if (name == "delay") return !node.value("repeat").empty() && node.value("repeat") != "1";
        if (!attribute.standard) return true;
        if (!attribute.isNumber) return value != attribute.standard && !value.empty();
        return !value.empty() && !(isNumber(value) && readFloat(value) == readFloat(attribute.standard));
    }

    void startLine(const Document& document, const Node& node, int depth, bool sameLine)
    {
        if (mText.empty()) return;
        if (sameLine)
        {
            mText += " ";
            return;
        }
        if (hasBlankLineAbove(document, node) && mText.back() != '\n') mText += "\n";
        mText += "\n" + std::string(static_cast<std::size_t>(depth), '\t');
    }

    static bool isOneLine(const Document& document, std::size_t from, std::size_t to)
    {
        const std::string_view between = document.bytes({from, to});
        return between.find('\n') == std::string_view::npos;
    }

    static bool hasBlankLineAbove(const Document& document, const Node& node)
    {
        int ends = 0;
        for (std::size_t i = node.open.begin; i > 0 && isBlank(document.text()[i - 1]); --i)
            if (document.text()[i - 1] == '\n') ++ends;
        return ends > 1;
    }

    // A comment of several lines keeps its shape where its first line is indented otherwise.
    std::string moved(const Document& document, const Node& node) const
    {
        const std::string_view text = document.bytes(node.open);
        const std::string before = document.indentAt(node.open.begin);
        const std::size_t line = mText.rfind('\n') + 1; // 0 where there is none
        const std::string indent = mText.substr(line, mText.find_first_not_of(" \t", line) - line);
        std::string result;
        for (std::size_t i = 0; i < text.size(); ++i)
        {
            result += text[i];
            if (text[i] != '\n' || text.substr(i + 1, before.size()) != before) continue;
            result += indent;
            i += before.size();
        }
        return result;
    }

    static std::string trimmed(std::string_view text)
    {
        while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
        return std::string(text);
    }

    const Node* replacement(const Node& node) const
    {
        if (!mAdditions) return nullptr;
        const auto found = mAdditions->verbatim.find(&node);
        return found == mAdditions->verbatim.end() ? nullptr : found->second;
    }

    bool hasAddition(const Node& node, std::map<const Node*, std::vector<const Node*>> Additions::*list) const
    {
        return mAdditions && (mAdditions->*list).count(&node) > 0;
    }

    void addAll(const Node& node, int depth, std::map<const Node*, std::vector<const Node*>> Additions::*list)
    {
        if (!hasAddition(node, list)) return;
        for (const Node* comment : (mAdditions->*list).at(&node))
            writeNode(*mAdditions->document, *comment, depth, list == &Additions::behind);
    }

    const Document& mDocument;
    const Additions* const mAdditions;
    std::string mText;
};

// Finds where the comments of the old script go in the saved one.
class CommentCarrier
{
public:
    CommentCarrier(const Score& old, const Score& saved, Additions& additions) : mOld(old), mAdditions(additions)
    {
        mAdditions.document = &old.document();
        const Node& savedRoot = saved.document().root();
        for (const std::unique_ptr<Node>& node : old.document().prolog())
            if (node->kind == Node::Kind::COMMENT || node->name == "xml")
                mAdditions.before[&savedRoot].push_back(node.get());
        pairEntries(old.entries(), saved.entries());
        carry(old.document().root(), savedRoot);
    }

private:
    void pairEntries(const Entries& before, const Entries& after)
    {
        const Partners partners = matchEntries(before, after);
        for (std::size_t i = 0; i < before.size(); ++i)
        {
            if (partners[i] < 0) continue;
            const Entry& entry = *before[i];
            const Entry& saved = *after[static_cast<std::size_t>(partners[i])];
            mPartners[entry.node] = saved.node;
            if (meaning(entry) == meaning(saved))
            {
                mAdditions.verbatim[saved.node] = entry.node;
                continue;
            }
            pair(entry.triggers, saved.triggers, matchTriggers(entry.triggers, saved.triggers));
            const Partners splines = matchSplines(entry.splines, saved.splines);
            pair(entry.splines, saved.splines, splines);
            for (std::size_t k = 0; k < splines.size(); ++k)
            {
                if (splines[k] < 0) continue;
                const Spline& spline = saved.splines[static_cast<std::size_t>(splines[k])];
                pair(entry.splines[k].keys, spline.keys, matchKeys(entry.splines[k].keys, spline.keys));
                carry(*entry.splines[k].node, *spline.node);
            }
            pairEntries(entry.children, saved.children);
            carry(*entry.node, *saved.node);
        }
    }

    template <class Items> void pair(const Items& before, const Items& after, const Partners& partners)
    {
        for (std::size_t i = 0; i < before.size(); ++i)
            if (partners[i] >= 0) mPartners[before[i].node] = after[static_cast<std::size_t>(partners[i])].node;
    }

    // The comments that lie directly in `old`: those on the line of a tag stay there, the others go ahead of the next
    // tag that is still there, or to the end.
    void carry(const Node& old, const Node& saved)
    {
        std::vector<const Node*> waiting;
        const Node* before = nullptr;
        for (const std::unique_ptr<Node>& node : old.children)
        {
            const auto partner = mPartners.find(node.get());
            if (node->kind == Node::Kind::COMMENT)
            {
                const std::size_t from = before ? before->span().end : old.open.end;
                const bool sameLine =
                    mOld.document().bytes({from, node->open.begin}).find('\n') == std::string_view::npos;
                const auto neighbour = mPartners.find(before);
                if (sameLine && !before)
                    mAdditions.behind[&saved].push_back(node.get());
                else if (sameLine && neighbour != mPartners.end())
                    mAdditions.behind[neighbour->second].push_back(node.get());
                else
                    waiting.push_back(node.get());
            }
            else if (partner != mPartners.end())
            {
                std::vector<const Node*>& place = mAdditions.before[partner->second];
                place.insert(place.end(), waiting.begin(), waiting.end());
                waiting.clear();
            }
            if (node->kind == Node::Kind::TAG) before = node.get();
        }
        if (!waiting.empty()) mAdditions.last[&saved] = std::move(waiting);
    }

    const Score& mOld;
    Additions& mAdditions;
    std::map<const Node*, const Node*> mPartners; // the saved one of each old one
};

void requireSameMeaning(const Score& score, const std::string& text)
{
    if (meaning(Score(text, score.path())) != meaning(score))
        throw Failure(score.path() + " would not mean the same any more; mend what `timeline check` finds first");
}

} // namespace

std::string format(const Score& score)
{
    const std::string text = Writer(score.document(), nullptr).write();
    requireSameMeaning(score, text);
    return text;
}

std::string mergeComments(const Score& old, const Score& saved)
{
    Additions additions;
    const CommentCarrier carrier(old, saved, additions);
    const std::string text = Writer(saved.document(), &additions).write();
    requireSameMeaning(saved, text);
    return text;
}

} // namespace Timeline
