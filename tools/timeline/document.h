#pragma once

#include "failure.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Timeline
{

// The bytes from `begin` up to, but not at, `end` of a document's text.
struct Span
{
    std::size_t begin = 0;
    std::size_t end = 0;

    bool empty() const { return begin == end; }
};

// An attribute with its value as the player reads it. Given twice, it counts once: at its first place in the order,
// with the value and the spans of its last.
struct Attribute
{
    std::string name;
    std::string value;
    Span whole;     // from the name to the end of the value, quotes included
    Span valueSpan; // of the value without quotes
    char quote = 0; // 0 for a bare word
};

// A tag, comment or text. Nodes belong to their document.
struct Node
{
    enum class Kind
    {
        TAG,
        COMMENT,
        TEXT,
        OTHER // <? > and <! >
    };

    // The value of an attribute; empty if it is missing.
    const std::string& value(std::string_view attribute) const;
    const Attribute* find(std::string_view attribute) const;

    // The tag with all that lies in it, up to the end of its closing tag.
    Span span() const { return {open.begin, close.empty() ? open.end : close.end}; }

    bool isTag(std::string_view tag) const { return kind == Kind::TAG && name == tag; }

    Kind kind = Kind::TAG;
    std::string name; // of a tag; the content of a comment or text
    std::vector<Attribute> attributes;
    Span open;     // the tag itself, or the whole comment or text
    Span close;    // the closing tag; empty for a tag without one
    int line = 1;  // of the first byte, from 1
    int depth = 0; // 0 for the root
    Node* parent = nullptr;
    std::vector<std::unique_ptr<Node>> children;
};

// A text that the player refuses. `text()` is what it says, `line()` where it stopped; `what()` names the file too.
class SyntaxError : public Failure
{
public:
    SyntaxError(const std::string& text, int line, const std::string& file = "")
        : Failure(file.empty() ? text : file + ": " + text), mText(text), mFile(file), mLine(line)
    {
    }

    const std::string& text() const { return mText; }
    const std::string& file() const { return mFile; }
    int line() const { return mLine; }

private:
    std::string mText;
    std::string mFile;
    int mLine;
};

// A document of our XML dialect with the place of everything in its text, so that a change touches only what it is
// about. The tags are read by the library that the player reads with; it alone says what is a document and what is not.
class Document
{
public:
    // `onlyClosingTagEnds`: as Xml::XmlParser::mOnlyClosingTagEnds; true for scripts. Throws SyntaxError, and Failure
    // for tags nested more than MAX_DEPTH deep.
    // `path` is for their messages.
    Document(std::string text, bool onlyClosingTagEnds, const std::string& path = "");
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    static const int MAX_DEPTH = 500;

    const std::string& text() const { return mText; }
    const Node& root() const { return *mRoot; }

    // The comments and other tags before the root.
    const std::vector<std::unique_ptr<Node>>& prolog() const { return mProlog; }

    std::string_view bytes(Span span) const
    {
        return std::string_view(mText).substr(span.begin, span.end - span.begin);
    }

    // The blanks and tabs at the start of the line in which `position` lies.
    std::string indentAt(std::size_t position) const;

    // `text` with every line end as this document has its first one.
    std::string withLineEnds(std::string_view text) const;

    // The whole lines of `node`, its newline included, if it shares them with nothing else; otherwise the node itself.
    Span lines(const Node& node) const;

private:
    void read(bool onlyClosingTagEnds, const std::string& path);
    int lineAt(std::size_t position);

    std::string mText;
    std::unique_ptr<Node> mRoot;
    std::vector<std::unique_ptr<Node>> mProlog;
    std::size_t mCounted = 0; // newlines have been counted up to here
    int mLine = 1;
};

} // namespace Timeline
