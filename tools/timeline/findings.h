#pragma once

#include "document.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Timeline
{

enum class Severity
{
    ERROR,  // ends or spoils the show
    WARNING // likely not meant
};

struct Finding
{
    std::string file;
    int line;
    Severity severity;
    std::string code;
    std::string text;
    bool hasTime;
    double time; // in the show, seconds
};

// Gathers what is found in one file, less what its author has allowed: a comment `timeline: allow CODE...` silences
// these codes for the tag behind it and all that lies in that tag; ahead of the root, for the whole file.
class Findings
{
public:
    explicit Findings(const std::string& file) : mFile(file) {}
    Findings(const std::string& file, const Document& document);

    void add(Severity severity, const Node& node, const char* code, const std::string& text);
    void add(Severity severity, const Node& node, const char* code, const std::string& text, double time);

    // For what has no tag, such as a mistake in the syntax.
    void add(Severity severity, int line, const char* code, const std::string& text);

    // Sorted by line.
    std::vector<Finding> take();

private:
    void readAllowed(const std::vector<std::unique_ptr<Node>>& siblings, const Node* behindAll);
    bool isAllowed(const Node& node, const std::string& code) const;

    std::string mFile;
    std::vector<Finding> mFindings;
    std::map<const Node*, std::set<std::string>> mAllowed;
};

// "; did you mean 'y'?" for the name of `known` that is near to `name`, or nothing.
std::string suggestion(const std::string& name, const std::vector<std::string>& known);

} // namespace Timeline
