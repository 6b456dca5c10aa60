#pragma once

#include "document.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Timeline
{

// Changes of a document's text, gathered and then applied in one go. What is not changed stays as it is, byte for byte.
class Edits
{
public:
    explicit Edits(const Document& document) : mDocument(document) {}

    // Sets an attribute in the way in which it is written there; a missing one is added behind the others. Throws
    // Failure for a value that cannot be written: with a line end, or with both kinds of quotes.
    void setAttribute(const Node& node, std::string_view name, const std::string& value);

    // The same for a number; nothing happens if what stands there, or is missing as 0, already means this number.
    void setNumber(const Node& node, std::string_view name, float number);

    void removeAttribute(const Node& node, std::string_view name);

    // Removes a node with its whole lines, if it has them for itself.
    void remove(const Node& node) { replace(mDocument.lines(node), ""); }

    void replace(Span span, std::string_view text);

    // Several texts for one place come out in the order in which they were given.
    void insert(std::size_t position, std::string_view text) { replace({position, position}, text); }

    // Puts the text of a node, without indent and line end, on a line of its own behind or before `node`.
    void insertBehind(const Node& node, const std::string& text);
    void insertBefore(const Node& node, const std::string& text);

    bool empty() const { return mChanges.empty(); }

    // The text with all changes. Throws Failure if two of them meet.
    std::string apply() const { return applyTo({0, mDocument.text().size()}); }

    // The same for a piece of the text; changes outside it are left out.
    std::string applyTo(Span piece) const;

private:
    struct Change
    {
        Span span;
        std::string text;
    };

    const Document& mDocument;
    std::vector<Change> mChanges;
};

// `name="value"` with quotes that the value does not hold. Throws Failure as Edits::setAttribute.
std::string writeAttribute(std::string_view name, const std::string& value);

// Checks that a name or value can stand in a script and live through a save. Throws Failure.
void requireWritable(const std::string& value);

} // namespace Timeline
