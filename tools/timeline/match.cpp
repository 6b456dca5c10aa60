#include "match.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <unordered_map>

namespace Timeline
{

namespace
{

void put(std::string& bytes, float number)
{
    if (number == 0.0f) number = 0.0f; // -0 is the same to the player
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void put(std::string& bytes, int number)
{
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void put(std::string& bytes, const std::string& text)
{
    put(bytes, static_cast<int>(text.size()));
    bytes += text;
}

// Pairs up what has the same key and no partner yet, in the order of both lists.
template <class List, class KeyOf>
void pairByKey(const List& before, const List& after, Partners& partners, KeyOf keyOf)
{
    using Id = decltype(keyOf(*before.begin()));
    std::vector<bool> isTaken(after.size(), false);
    for (const int partner : partners)
        if (partner >= 0) isTaken[static_cast<std::size_t>(partner)] = true;
    std::unordered_map<Id, std::vector<int>> waiting; // the last one comes first
    for (std::size_t i = after.size(); i > 0; --i)
        if (!isTaken[i - 1]) waiting[keyOf(after[i - 1])].push_back(static_cast<int>(i - 1));
    for (std::size_t i = 0; i < before.size(); ++i)
    {
        if (partners[i] >= 0) continue;
        const auto found = waiting.find(keyOf(before[i]));
        if (found == waiting.end() || found->second.empty()) continue;
        partners[i] = found->second.back();
        found->second.pop_back();
    }
}

std::string keyOf(const std::string& name, float time)
{
    std::string bytes = name;
    put(bytes, time);
    return bytes;
}

// Entries of one name that overlap, the nearest first choice of each.
void pairByTime(const Entries& before, const Entries& after, Partners& partners)
{
    std::vector<bool> isTaken(after.size(), false);
    for (const int partner : partners)
        if (partner >= 0) isTaken[static_cast<std::size_t>(partner)] = true;
    std::unordered_map<std::string, std::vector<std::size_t>> free;
    for (std::size_t i = 0; i < after.size(); ++i)
        if (!isTaken[i]) free[after[i]->name].push_back(i);
    for (std::size_t i = 0; i < before.size(); ++i)
    {
        const auto group = partners[i] < 0 ? free.find(before[i]->name) : free.end();
        if (group == free.end()) continue;
        const Entry& entry = *before[i];
        std::size_t best = group->second.size();
        float bestAway = std::numeric_limits<float>::infinity();
        for (std::size_t k = 0; k < group->second.size(); ++k)
        {
            const Entry& other = *after[group->second[k]];
            const bool overlaps = entry.start < other.end && other.start < entry.end;
            const float away = std::fabs(entry.start - other.start) + std::fabs(entry.end - other.end);
            if ((!overlaps && entry.end != other.end) || !(away < bestAway)) continue;
            best = k;
            bestAway = away;
        }
        if (best == group->second.size()) continue;
        partners[i] = static_cast<int>(group->second[best]);
        group->second.erase(group->second.begin() + static_cast<std::ptrdiff_t>(best));
    }
}

} // namespace

std::string meaning(const Trigger& trigger)
{
    std::string bytes;
    put(bytes, trigger.name);
    put(bytes, trigger.value);
    put(bytes, trigger.start);
    put(bytes, trigger.repeat);
    put(bytes, trigger.repeat > 1 ? trigger.delay : 0.0f);
    return bytes;
}

std::string meaning(const Spline& spline)
{
    std::string bytes;
    put(bytes, spline.name);
    put(bytes, spline.type);
    for (const float number : {spline.timeScale, spline.timeOffset, spline.valueScale, spline.valueOffset})
        put(bytes, number);
    put(bytes, static_cast<int>(spline.keys.size()));
    for (const Key& key : spline.keys)
    {
        put(bytes, key.time);
        put(bytes, key.value);
    }
    return bytes;
}

std::string innerMeaning(const Entry& entry)
{
    std::string bytes;
    put(bytes, static_cast<int>(entry.triggers.size()));
    for (const Trigger& trigger : entry.triggers) bytes += meaning(trigger);
    put(bytes, static_cast<int>(entry.splines.size()));
    for (const Spline& spline : entry.splines) bytes += meaning(spline);
    put(bytes, static_cast<int>(entry.children.size()));
    for (const std::unique_ptr<Entry>& child : entry.children) bytes += meaning(*child);
    return bytes;
}

std::string meaning(const Entry& entry)
{
    std::string bytes;
    put(bytes, entry.name);
    put(bytes, entry.enabled ? 1 : 0);
    put(bytes, entry.start);
    put(bytes, entry.end);
    return bytes + innerMeaning(entry);
}

std::string meaning(const Score& score)
{
    std::string bytes = score.document().root().name + ":";
    for (const std::unique_ptr<Entry>& entry : score.entries()) bytes += meaning(*entry);
    return bytes;
}

Partners matchEntries(const Entries& before, const Entries& after)
{
    using Item = std::unique_ptr<Entry>;
    Partners partners(before.size(), -1);
    pairByKey(before, after, partners, [](const Item& entry) { return meaning(*entry); });
    pairByKey(before, after, partners,
              [](const Item& entry) { return keyOf(keyOf(entry->name, entry->start), entry->end); });
    pairByKey(before, after, partners, [](const Item& entry) { return keyOf(entry->name, entry->start); });
    pairByTime(before, after, partners);
    pairByKey(before, after, partners,
              [](const Item& entry) { return keyOf(entry->name, entry->end - entry->start) + innerMeaning(*entry); });
    pairByKey(before, after, partners,
              [](const Item& entry) { return keyOf(keyOf("", entry->start), entry->end) + innerMeaning(*entry); });
    return partners;
}

Partners matchTriggers(const std::vector<Trigger>& before, const std::vector<Trigger>& after)
{
    Partners partners(before.size(), -1);
    pairByKey(before, after, partners, [](const Trigger& trigger) { return meaning(trigger); });
    pairByKey(before, after, partners, [](const Trigger& trigger) { return keyOf(trigger.name, trigger.start); });
    pairByKey(before, after, partners, [](const Trigger& trigger) { return trigger.name + "=" + trigger.value; });
    pairByKey(before, after, partners, [](const Trigger& trigger) { return trigger.name; });
    return partners;
}

Partners matchSplines(const std::vector<Spline>& before, const std::vector<Spline>& after)
{
    Partners partners(before.size(), -1);
    pairByKey(before, after, partners, [](const Spline& spline) { return meaning(spline); });
    pairByKey(before, after, partners, [](const Spline& spline) { return spline.name; });
    return partners;
}

Partners matchKeys(const std::vector<Key>& before, const std::vector<Key>& after)
{
    Partners partners(before.size(), -1);
    pairByKey(before, after, partners, [](const Key& key) { return keyOf(keyOf("", key.time), key.value); });
    pairByKey(before, after, partners, [](const Key& key) { return keyOf("", key.time); });
    pairByKey(before, after, partners, [](const Key& key) { return key.value; });
    return partners;
}

} // namespace Timeline
