#include "findings.h"

#include "numbers.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace Timeline
{

namespace
{

const char ALLOW[] = "timeline: allow";

std::set<std::string> allowedCodes(const std::string& comment)
{
    const std::size_t found = comment.find(ALLOW);
    if (found == std::string::npos) return {};
    std::istringstream words(comment.substr(found + sizeof ALLOW - 1));
    std::set<std::string> codes;
    for (std::string word; words >> word && word != "--";)
    {
        const bool isLast = word.back() == ':'; // a reason follows
        while (!word.empty() && (word.back() == ',' || word.back() == ';' || word.back() == ':')) word.pop_back();
        codes.insert(word);
        if (isLast) break;
    }
    return codes;
}

} // namespace

Findings::Findings(const std::string& file, const Document& document) : mFile(file)
{
    readAllowed(document.prolog(), &document.root());
    readAllowed(document.root().children, nullptr);
}

void Findings::readAllowed(const std::vector<std::unique_ptr<Node>>& siblings, const Node* behindAll)
{
    std::set<std::string> waiting;
    for (const std::unique_ptr<Node>& node : siblings)
    {
        if (node->kind == Node::Kind::COMMENT) waiting.merge(allowedCodes(node->name));
        if (node->kind != Node::Kind::TAG) continue;
        if (!waiting.empty()) mAllowed[node.get()] = std::move(waiting);
        waiting.clear();
        readAllowed(node->children, nullptr);
    }
    if (behindAll && !waiting.empty()) mAllowed[behindAll] = std::move(waiting);
}

bool Findings::isAllowed(const Node& node, const std::string& code) const
{
    if (mAllowed.empty()) return false;
    for (const Node* tag = &node; tag; tag = tag->parent)
    {
        const auto found = mAllowed.find(tag);
        if (found != mAllowed.end() && found->second.count(code) > 0) return true;
    }
    return false;
}

void Findings::add(Severity severity, const Node& node, const char* code, const std::string& text)
{
    if (!isAllowed(node, code)) mFindings.push_back({mFile, node.line, severity, code, text, false, 0.0});
}

void Findings::add(Severity severity, const Node& node, const char* code, const std::string& text, double time)
{
    if (!isAllowed(node, code)) mFindings.push_back({mFile, node.line, severity, code, text, true, time});
}

void Findings::add(Severity severity, int line, const char* code, const std::string& text)
{
    mFindings.push_back({mFile, line, severity, code, text, false, 0.0});
}

std::vector<Finding> Findings::take()
{
    std::stable_sort(mFindings.begin(), mFindings.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return std::move(mFindings);
}

std::string suggestion(const std::string& name, const std::vector<std::string>& known)
{
    const std::string meant = nearest(name, known);
    return meant.empty() ? "" : "; did you mean '" + meant + "'?";
}

} // namespace Timeline
