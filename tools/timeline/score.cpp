#include "score.h"

#include "numbers.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <utility>

namespace Timeline
{

namespace
{

float readScale(const std::string& text)
{
    return text.empty() ? 1.0f : readFloat(text);
}

Trigger readTrigger(const Node& node)
{
    const std::string& repeat = node.value("repeat");
    const std::string& delay = node.value("delay");
    Trigger trigger{&node, node.value("name"), node.value("value"), readFloat(node.value("start")), 1, 0.0f};
    if (repeat.empty()) return trigger;
    trigger.repeat = readInt(repeat);
    trigger.delay = delay.empty() ? 0.1f : readFloat(delay);
    return trigger;
}

Spline readSpline(const Node& node)
{
    Spline spline{&node,
                  node.value("name"),
                  node.value("type"),
                  readScale(node.value("timescale")),
                  readFloat(node.value("timeoffset")),
                  readScale(node.value("valuescale")),
                  readFloat(node.value("valueoffset")),
                  {}};
    for (const std::unique_ptr<Node>& child : node.children)
        if (child->isTag("key"))
            spline.keys.push_back({child.get(), readFloat(child->value("time")), readFloat(child->value("value"))});
    return spline;
}

// Nesting is bounded by Document::MAX_DEPTH.
std::vector<std::unique_ptr<Entry>> readEntries(const Node& node, const Entry* parent)
{
    std::vector<std::unique_ptr<Entry>> entries;
    for (const std::unique_ptr<Node>& child : node.children)
    {
        if (!child->isTag("effect")) continue;
        auto entry = std::make_unique<Entry>();
        entry->node = child.get();
        entry->parent = parent;
        entry->number = (parent ? parent->number + "." : "") + std::to_string(entries.size() + 1);
        entry->name = child->value("name");
        entry->enabled = child->value("state") != "off";
        entry->start = readFloat(child->value("start"));
        entry->end = readFloat(child->value("end"));
        entry->origin = parent ? parent->showStart() : 0.0;
        for (const std::unique_ptr<Node>& part : child->children)
        {
            if (part->isTag("trigger")) entry->triggers.push_back(readTrigger(*part));
            if (part->isTag("spline")) entry->splines.push_back(readSpline(*part));
        }
        entry->children = readEntries(*child, entry.get());
        entries.push_back(std::move(entry));
    }
    return entries;
}

void gather(const std::vector<std::unique_ptr<Entry>>& entries, std::vector<const Entry*>& all)
{
    for (const std::unique_ptr<Entry>& entry : entries)
    {
        all.push_back(entry.get());
        gather(entry->children, all);
    }
}

} // namespace

std::unique_ptr<Script::Spline> Spline::curve() const
{
    auto result = std::make_unique<Script::Spline>();
    result->mName = name;
    result->mType = type;
    result->mTimeScale = timeScale;
    result->mTimeOffset = timeOffset;
    result->mValueScale = valueScale;
    result->mValueOffset = valueOffset;
    for (const Key& key : keys)
    {
        auto copy = std::make_unique<Script::Spline::Key>();
        copy->time = key.time;
        copy->value = key.value;
        result->mKeys.push_back(copy.get());
        copy.release();
    }
    result->recalculate();
    return result;
}

std::string Entry::label() const
{
    return (name.empty() ? "(no name)" : name) + " " + readable(showStart()) + "-" + readable(showEnd());
}

Score::Score(std::string text, std::string path)
    : mPath(std::move(path)), mDocument(std::make_unique<Document>(std::move(text), true, mPath))
{
    if (mDocument->root().name != "script") return;
    mEntries = readEntries(mDocument->root(), nullptr);
}

Score Score::load(const std::string& path)
{
    Score score(readFile(path), path);
    if (score.document().root().name != "script")
        throw Failure(path + " is no script: its root is <" + score.document().root().name + ">");
    return score;
}

std::vector<const Entry*> Score::all() const
{
    std::vector<const Entry*> result;
    gather(mEntries, result);
    return result;
}

double Score::end() const
{
    float last = 0.0f;
    for (const std::unique_ptr<Entry>& entry : mEntries) last = std::max(last, entry->end);
    return static_cast<double>(last);
}

std::string readFile(const std::string& path)
{
    if (path == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
    if (std::filesystem::is_directory(path)) throw Failure(path + " is a folder");
    std::ifstream file(path, std::ios::binary);
    if (!file) throw Failure(path + ": " + std::strerror(errno));
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::string& path, const std::string& text)
{
    if (path == "-")
    {
        std::cout << text << std::flush;
        if (!std::cout) throw Failure("The standard output cannot be written");
        return;
    }
    // A link or a device is written through; an ordinary file is replaced when its new text is complete.
    std::error_code ignored;
    const bool isOrdinary =
        std::filesystem::symlink_status(path, ignored).type() == std::filesystem::file_type::regular;
    const std::string target = isOrdinary ? path + ".new" : path;
    std::ofstream file(target, std::ios::binary | std::ios::trunc);
    if (!file) throw Failure(target + ": " + std::strerror(errno));
    file << text;
    file.close();
    if (!file) throw Failure(target + " cannot be written");
    if (!isOrdinary) return;
    std::error_code error;
    std::filesystem::permissions(target, std::filesystem::status(path).permissions(), error);
    std::filesystem::rename(target, path, error);
    if (error) throw Failure(path + ": " + error.message());
}

} // namespace Timeline
