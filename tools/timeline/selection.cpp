#include "selection.h"

#include "findings.h"
#include "numbers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <set>

namespace Timeline
{

const char ENTRY_HELP[] = "Entries: a number as print shows it, a NAME, or NAME@TIME";

namespace
{

const double SAME_TIME = 0.0005; // seconds; print shows three decimals

const std::map<std::string, std::vector<std::string>> ATTRIBUTES = {
    {"effect", {"name", "state", "start", "end"}},
    {"trigger", {"start", "name", "value", "repeat", "delay"}},
    {"spline", {"name", "type", "timescale", "timeoffset", "valuescale", "valueoffset"}},
    {"key", {"time", "value"}},
};

bool isEntryNumber(const std::string& word)
{
    return !word.empty() && word.find_first_not_of("0123456789.") == std::string::npos;
}

bool lies(const Entry& entry, const Entry& around)
{
    for (const Entry* parent = entry.parent; parent; parent = parent->parent)
        if (parent == &around) return true;
    return false;
}

std::vector<std::string> split(const std::string& path)
{
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t slash; (slash = path.find('/', begin)) != std::string::npos; begin = slash + 1)
        parts.push_back(path.substr(begin, slash - begin));
    parts.push_back(path.substr(begin));
    return parts;
}

// "key[2]" is the name "key" and the number 2; 0 stands for no number.
struct Step
{
    explicit Step(const std::string& text) : name(text)
    {
        const std::size_t bracket = text.rfind('[');
        if (bracket == std::string::npos || text.back() != ']') return;
        const std::string digits = text.substr(bracket + 1, text.size() - bracket - 2);
        if (!isWholeNumber(digits) || readInt(digits) < 1) throw Failure("'" + text + "' counts from 1");
        name = text.substr(0, bracket);
        number = readInt(digits);
    }

    std::string name;
    int number = 0;
};

// A trigger, spline, key or entry in `node`.
const Node& follow(const Node& node, const std::string& text)
{
    const Step step(text);
    std::vector<const Node*> found;
    for (const std::unique_ptr<Node>& child : node.children)
    {
        if (child->kind != Node::Kind::TAG || ATTRIBUTES.count(child->name) == 0) continue;
        const bool isOfKind = child->name == step.name && step.number > 0;
        if (isOfKind || (child->name != "key" && child->value("name") == step.name)) found.push_back(child.get());
    }
    const std::string in = "<" + node.name + "> in line " + std::to_string(node.line);
    if (step.number > static_cast<int>(found.size()) || found.empty())
        throw Failure("There is no '" + text + "' in the " + in);
    if (step.number == 0 && found.size() > 1)
        throw Failure("There are " + std::to_string(found.size()) + " of '" + text + "' in the " + in + "; say '" +
                      text + "[1]' or another number");
    return *found[step.number == 0 ? 0 : static_cast<std::size_t>(step.number) - 1];
}

} // namespace

std::vector<const Entry*> select(const Score& score, const std::string& word)
{
    const std::vector<const Entry*> all = score.all();
    std::vector<const Entry*> found, starting;
    const std::size_t at = word.rfind('@');
    const std::string name = word.substr(0, at);
    const std::string when = at == std::string::npos ? "" : word.substr(at + 1);
    if (at != std::string::npos && !isNumber(when)) throw Failure("'" + when + "' is no time (" + word + ")");
    const double time = readDouble(when);
    std::vector<std::string> names;
    for (const Entry* entry : all)
    {
        names.push_back(entry->name);
        if (at == std::string::npos && isEntryNumber(word) ? entry->number != word : entry->name != name) continue;
        if (at != std::string::npos && std::fabs(entry->showStart() - time) < SAME_TIME) starting.push_back(entry);
        if (at == std::string::npos || (entry->showStart() <= time && time < entry->showEnd())) found.push_back(entry);
    }
    if (!starting.empty()) return starting;
    if (found.empty())
        throw Failure("There is no entry " + word +
                      (at == std::string::npos && !isEntryNumber(word) ? suggestion(word, names) : ""));
    return found;
}

std::vector<const Entry*> select(const Score& score, const std::vector<std::string>& words)
{
    std::set<const Entry*> chosen;
    for (const std::string& word : words)
        for (const Entry* entry : select(score, word)) chosen.insert(entry);
    std::vector<const Entry*> result;
    for (const Entry* entry : score.all())
    {
        const bool goesAlong =
            std::any_of(chosen.begin(), chosen.end(), [&](const Entry* around) { return lies(*entry, *around); });
        if (chosen.count(entry) > 0 && !goesAlong) result.push_back(entry);
    }
    return result;
}

const Entry& selectOne(const Score& score, const std::string& word)
{
    const std::vector<const Entry*> found = select(score, word);
    if (found.size() == 1) return *found.front();
    std::string text;
    for (const Entry* entry : found) text += (text.empty() ? "" : ", ") + entry->number + " (" + entry->label() + ")";
    throw Failure(word + " is more than one entry: " + text);
}

Place findPlace(const Score& score, const std::string& path)
{
    const std::vector<std::string> parts = split(path);
    if (parts.size() < 2) throw Failure("A path leads to a value, as in cubes@56/alpha/key[2]/value");
    const Node* node = selectOne(score, parts.front()).node;
    for (std::size_t i = 1; i + 1 < parts.size(); ++i) node = &follow(*node, parts[i]);
    const std::vector<std::string>& known = ATTRIBUTES.at(node->name);
    if (std::count(known.begin(), known.end(), parts.back()) == 0)
        throw Failure("A " + node->name + " has no '" + parts.back() + "'" + suggestion(parts.back(), known));
    return {node, parts.back()};
}

} // namespace Timeline
