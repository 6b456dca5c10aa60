#include "edits.h"

#include "numbers.h"

#include <algorithm>
#include <utility>

namespace Timeline
{

namespace
{

std::size_t nameEnd(const Document& document, const Node& node)
{
    std::size_t end = node.open.begin + 1;
    const std::string& text = document.text();
    while (end < node.open.end && text[end] != '>' && text[end] != '/' &&
           text.compare(end, node.name.size(), node.name) != 0)
        ++end;
    return std::min(end + node.name.size(), node.open.end);
}

char quoteFor(const std::string& value)
{
    requireWritable(value);
    return value.find('"') == std::string::npos ? '"' : '\'';
}

} // namespace

void requireWritable(const std::string& value)
{
    if (value.find_first_of("\r\n") != std::string::npos) throw Failure("A value cannot hold a line end");
    if (value.find('"') != std::string::npos && value.find('\'') != std::string::npos)
        throw Failure("A value cannot hold both kinds of quotes (" + value + ")");
}

std::string writeAttribute(std::string_view name, const std::string& value)
{
    const char quote = quoteFor(value);
    return std::string(name) + "=" + quote + value + quote;
}

void Edits::setAttribute(const Node& node, std::string_view name, const std::string& value)
{
    const Attribute* attribute = node.find(name);
    if (!attribute)
    {
        std::size_t position = nameEnd(mDocument, node);
        for (const Attribute& other : node.attributes) position = std::max(position, other.whole.end);
        insert(position, " " + writeAttribute(name, value));
        return;
    }
    requireWritable(value);
    if (attribute->quote && value.find(attribute->quote) == std::string::npos)
        replace(attribute->valueSpan, value);
    else
        replace(attribute->whole, writeAttribute(name, value));
}

void Edits::setNumber(const Node& node, std::string_view name, float number)
{
    if (readFloat(node.value(name)) == number) return;
    setAttribute(node, name, shortest(number));
}

void Edits::removeAttribute(const Node& node, std::string_view name)
{
    const Attribute* attribute = node.find(name);
    if (!attribute) return;
    Span span = attribute->whole;
    while (span.begin > 0 && (mDocument.text()[span.begin - 1] == ' ' || mDocument.text()[span.begin - 1] == '\t'))
        --span.begin;
    replace(span, "");
}

void Edits::replace(Span span, std::string_view text)
{
    mChanges.push_back({span, mDocument.withLineEnds(text)});
}

void Edits::insertBehind(const Node& node, const std::string& text)
{
    insert(node.span().end, "\n" + mDocument.indentAt(node.open.begin) + text);
}

void Edits::insertBefore(const Node& node, const std::string& text)
{
    insert(node.open.begin, text + "\n" + mDocument.indentAt(node.open.begin));
}

std::string Edits::applyTo(Span piece) const
{
    std::vector<const Change*> order;
    for (const Change& change : mChanges)
        if (change.span.begin >= piece.begin && change.span.end <= piece.end) order.push_back(&change);
    std::stable_sort(order.begin(), order.end(), [](const Change* a, const Change* b) {
        return a->span.begin != b->span.begin ? a->span.begin < b->span.begin : a->span.empty() && !b->span.empty();
    });
    std::string result;
    std::size_t position = piece.begin;
    for (const Change* change : order)
    {
        if (change->span.begin < position) throw Failure("Two changes meet at one place of the text");
        result.append(mDocument.bytes({position, change->span.begin}));
        result += change->text;
        position = change->span.end;
    }
    result.append(mDocument.bytes({position, piece.end}));
    return result;
}

} // namespace Timeline
