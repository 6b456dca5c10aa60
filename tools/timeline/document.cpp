#include "document.h"

#include "xml_parser.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>
#include <utility>

namespace Timeline
{

namespace
{

const std::string EMPTY;

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool isWord(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

// Finds the places of the attributes of a tag that the library has read already, so nothing in it is wrong.
class AttributeScanner
{
public:
    AttributeScanner(const std::string& text, Span tag) : mText(text), mPos(tag.begin + 1), mEnd(tag.end) {}

    void scan(Node& node)
    {
        skip();
        if (at('/'))
        {
            ++mPos;
            skip();
        }
        while (isWord(peek()) || at(':')) ++mPos;
        for (skip(); mPos < mEnd && !at('>'); skip())
        {
            if (at('/'))
                ++mPos;
            else
                place(node);
        }
    }

private:
    char peek() const { return mPos < mEnd ? mText[mPos] : '\0'; }
    bool at(char c) const { return mPos < mEnd && mText[mPos] == c; }

    void skip()
    {
        while (mPos < mEnd && isSpace(mText[mPos])) ++mPos;
    }

    void place(Node& node)
    {
        Attribute found;
        found.whole.begin = mPos;
        while (isWord(peek())) ++mPos;
        const std::string_view name = std::string_view(mText).substr(found.whole.begin, mPos - found.whole.begin);
        skip();
        ++mPos; // the =
        skip();
        if (at('"') || at('\''))
        {
            found.quote = peek();
            found.valueSpan.begin = ++mPos;
            while (mPos < mEnd && !at(found.quote)) ++mPos;
            found.valueSpan.end = mPos;
            found.whole.end = ++mPos;
        }
        else
        {
            found.valueSpan.begin = mPos;
            while (isWord(peek())) ++mPos;
            found.valueSpan.end = found.whole.end = mPos;
        }
        for (Attribute& attribute : node.attributes)
        {
            if (attribute.name != name) continue;
            attribute.whole = found.whole;
            attribute.valueSpan = found.valueSpan;
            attribute.quote = found.quote;
            return;
        }
    }

    const std::string& mText;
    std::size_t mPos;
    std::size_t mEnd;
};

// The line of the first tag that is not closed as it should be, and what is wrong there. The player's reader takes a
// closing tag of another name for one more tag and so complains at the end of the text, far from the trouble.
struct Misfit
{
    int line = 0; // 0 if there is none
    std::string text;
};

Misfit findMisfit(const std::string& text)
{
    std::vector<std::pair<std::string, int>> open;
    std::size_t counted = 0;
    int line = 1;
    for (std::size_t begin = 0, end = 0; (begin = text.find('<', end)) != std::string::npos;)
    {
        line += static_cast<int>(std::count(text.begin() + static_cast<std::ptrdiff_t>(counted),
                                            text.begin() + static_cast<std::ptrdiff_t>(begin), '\n'));
        counted = begin;
        if (text.compare(begin, 4, "<!--") == 0)
        {
            end = text.find("-->", begin);
            if (end == std::string::npos) return {line, "this comment is not closed"};
            continue;
        }
        char quote = 0;
        for (end = begin + 1; end < text.size() && (quote || text[end] != '>'); ++end)
        {
            if (quote ? text[end] == quote : text[end] == '"' || text[end] == '\'') quote = quote ? '\0' : text[end];
        }
        if (end == text.size()) return {line, "this tag is not closed"};
        const bool isClosing = text[begin + 1] == '/';
        std::size_t nameEnd = begin + 1 + isClosing;
        while (isWord(text[nameEnd])) ++nameEnd;
        const std::string name = text.substr(begin + 1 + isClosing, nameEnd - begin - 1 - isClosing);
        if (!isClosing && (text[end - 1] == '/' || text[begin + 1] == '?')) continue;
        if (!isClosing)
            open.emplace_back(name, line);
        else if (open.empty() || open.back().first != name)
            return {line, "</" + name + "> stands where " +
                              (open.empty() ? "no tag is open"
                                            : "</" + open.back().first + "> for line " +
                                                  std::to_string(open.back().second) + " was expected")};
        else
            open.pop_back();
    }
    if (open.empty()) return {};
    return {open.back().second, "this <" + open.back().first + "> is not closed"};
}

// What the player's reader says about the text: nothing, or its error.
void judge(const std::string& text, bool onlyClosingTagEnds, const std::string& path)
{
    if (text.size() > INT_MAX) throw Failure("The text is too long (2 GiB or more)");
    Xml::XmlParser parser;
    parser.mOnlyClosingTagEnds = onlyClosingTagEnds;
    try
    {
        parser.parse(text);
    }
    catch (const Xml::XmlException& error)
    {
        int line = 1;
        if (std::sscanf(error.what(), "(error at line %d", &line) != 1) line = 1;
        const std::string said = error.what();
        const Misfit misfit = said.find("EOF") == std::string::npos ? Misfit() : findMisfit(text);
        if (misfit.line == 0) throw SyntaxError(said, line, path);
        throw SyntaxError(misfit.text + ": " + said, misfit.line, path);
    }
}

} // namespace

const Attribute* Node::find(std::string_view attribute) const
{
    for (const Attribute& candidate : attributes)
        if (candidate.name == attribute) return &candidate;
    return nullptr;
}

const std::string& Node::value(std::string_view attribute) const
{
    const Attribute* found = find(attribute);
    return found ? found->value : EMPTY;
}

Document::Document(std::string text, bool onlyClosingTagEnds, const std::string& path) : mText(std::move(text))
{
    judge(mText, onlyClosingTagEnds, path);
    read(onlyClosingTagEnds, path);
}

// The same walk as the parser's: a closed tag of the innermost open tag's name ends it.
void Document::read(bool onlyClosingTagEnds, const std::string& path)
{
    Xml::BufferReader reader(mText.data(), static_cast<unsigned int>(mText.size()));
    Node* open = nullptr;
    while (!mRoot || open)
    {
        reader.skipWhitespace(0);
        const std::size_t begin = reader.mPos;
        Xml::XmlTag tag;
        tag.parse(reader);
        const std::size_t end = reader.mPos;

        if (open && tag.mClosed && tag.mName == open->name)
        {
            std::size_t behind = begin + 1;
            while (behind < end && isSpace(mText[behind])) ++behind;
            const bool isClosing = mText[begin] == '<' && behind < end && mText[behind] == '/';
            if (isClosing || !onlyClosingTagEnds)
            {
                open->close = {begin, end};
                open = open->parent;
                continue;
            }
        }
        auto node = std::make_unique<Node>();
        node->open = {begin, end};
        node->line = lineAt(begin);
        node->parent = open;
        node->depth = open ? open->depth + 1 : 0;
        if (node->depth > MAX_DEPTH)
            throw Failure(path + ": tags are nested more than " + std::to_string(MAX_DEPTH) + " deep in line " +
                          std::to_string(node->line));
        switch (tag.mType)
        {
        case Xml::XmlTag::Normal:
            node->name = tag.mName;
            for (Xml::XmlTag::Argument& argument : tag.mArguments)
                node->attributes.push_back({std::move(argument.name), std::move(argument.value), {}, {}, 0});
            AttributeScanner(mText, node->open).scan(*node);
            break;
        case Xml::XmlTag::Comment:
            node->kind = Node::Kind::COMMENT;
            node->name = tag.getValue("content");
            break;
        case Xml::XmlTag::Text:
            node->kind = Node::Kind::TEXT;
            node->name = tag.getValue("content");
            break;
        default:
            node->kind = Node::Kind::OTHER;
            node->name = tag.mName;
        }
        Node* const added = node.get();
        const bool isNormal = node->kind == Node::Kind::TAG;
        if (open)
            open->children.push_back(std::move(node));
        else if (isNormal)
            mRoot = std::move(node);
        else
            mProlog.push_back(std::move(node));
        if (isNormal && !tag.mClosed) open = added;
    }
}

// Positions come in ascending order.
int Document::lineAt(std::size_t position)
{
    mLine += static_cast<int>(std::count(mText.begin() + static_cast<std::ptrdiff_t>(mCounted),
                                         mText.begin() + static_cast<std::ptrdiff_t>(position), '\n'));
    mCounted = position;
    return mLine;
}

std::string Document::indentAt(std::size_t position) const
{
    std::size_t begin = position;
    while (begin > 0 && mText[begin - 1] != '\n') --begin;
    std::size_t end = begin;
    while (end < mText.size() && (mText[end] == ' ' || mText[end] == '\t')) ++end;
    return mText.substr(begin, end - begin);
}

std::string Document::withLineEnds(std::string_view text) const
{
    const std::size_t first = mText.find('\n');
    const bool isReturned = first != std::string::npos && first > 0 && mText[first - 1] == '\r';
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();)
    {
        // All returns before a line end go, so that what was written so stays the same when it is written again.
        const std::size_t end = std::min(text.find_first_not_of('\r', i), text.size());
        const bool isLineEnd = end < text.size() && text[end] == '\n';
        if (!isLineEnd) result.append(text.substr(i, end - i));
        if (isLineEnd && isReturned) result += '\r';
        if (end < text.size()) result += text[end];
        i = end + 1;
    }
    return result;
}

Span Document::lines(const Node& node) const
{
    Span span = node.span();
    std::size_t begin = span.begin;
    while (begin > 0 && (mText[begin - 1] == ' ' || mText[begin - 1] == '\t')) --begin;
    std::size_t end = span.end;
    while (end < mText.size() && mText[end] != '\n' && isSpace(mText[end])) ++end;
    const bool startsLine = begin == 0 || mText[begin - 1] == '\n';
    const bool endsLine = end == mText.size() || mText[end] == '\n';
    if (!startsLine || !endsLine) return span;
    return {begin, std::min(end + 1, mText.size())};
}

} // namespace Timeline
