#pragma once

#include "document.h"

#include "script_spline.h"

#include <memory>
#include <string>
#include <vector>

namespace Timeline
{

struct Key
{
    const Node* node; // of the document, as all nodes here
    float time;       // key time, before scale and offset
    float value;
};

struct Trigger
{
    // Seconds of the n-th firing, from 0, after the start of the entry.
    double due(int n) const { return static_cast<double>(start) + n * static_cast<double>(delay); }

    const Node* node;
    std::string name;
    std::string value;
    float start;
    int repeat;
    float delay;
};

struct Spline
{
    // Seconds after the start of the entry.
    double local(const Key& key) const
    {
        return static_cast<double>(key.time) * static_cast<double>(timeScale) + static_cast<double>(timeOffset);
    }

    // The player's own curve.
    std::unique_ptr<Script::Spline> curve() const;

    const Node* node;
    std::string name;
    std::string type;
    float timeScale;
    float timeOffset;
    float valueScale;
    float valueOffset;
    std::vector<Key> keys;
};

struct Entry
{
    double showStart() const { return origin + static_cast<double>(start); }
    double showEnd() const { return origin + static_cast<double>(end); }

    // The entry as messages name it: "cubes 56-64".
    std::string label() const;

    const Node* node;
    const Entry* parent; // null for an outer entry
    std::string number;  // "12", from 1 in the order of the script, or "12.1" for a child
    std::string name;
    bool enabled;
    float start; // seconds, in the time of the parent
    float end;
    double origin; // show time at which the parent's time is 0
    std::vector<Trigger> triggers;
    std::vector<Spline> splines;
    std::vector<std::unique_ptr<Entry>> children;
};

// A script as the player reads it, with the place of everything in its text. Numbers are the player's; times in the
// show are these added up. A spline without keys, which ends the player's reading, is an empty one here.
class Score
{
public:
    // Throws SyntaxError and Failure as Document does. A root that is not <script> gives a score without entries.
    // `path` is for messages.
    Score(std::string text, std::string path);

    // Reads a file; "-" is the standard input. Throws Failure if it is no script.
    static Score load(const std::string& path);

    const std::string& path() const { return mPath; }
    const Document& document() const { return *mDocument; }
    const std::vector<std::unique_ptr<Entry>>& entries() const { return mEntries; }

    // All entries, each ahead of its children, in the order of the script.
    std::vector<const Entry*> all() const;

    // The end of the show, in seconds.
    double end() const;

    // "FILE:LINE"
    std::string place(const Node& node) const { return mPath + ":" + std::to_string(node.line); }

private:
    std::string mPath;
    std::unique_ptr<Document> mDocument;
    std::vector<std::unique_ptr<Entry>> mEntries;
};

// The whole text of a file; "-" is the standard input. Throws Failure.
std::string readFile(const std::string& path);

// Writes by way of a file beside it, so that a failure leaves the old text; "-" is the standard output. Throws Failure.
void writeFile(const std::string& path, const std::string& text);

} // namespace Timeline
