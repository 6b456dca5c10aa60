#include "difference.h"

#include "match.h"
#include "numbers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace Timeline
{

namespace
{

std::string change(const std::string& what, const std::string& before, const std::string& after)
{
    return what + " " + (before.empty() ? "''" : before) + " to " + (after.empty() ? "''" : after);
}

std::string change(const std::string& what, float before, float after)
{
    return change(what, shortest(before), shortest(after));
}

std::string join(const std::vector<std::string>& parts, const char* glue)
{
    std::string text;
    for (const std::string& part : parts) text += (text.empty() ? "" : glue) + part;
    return text;
}

// The partners in the order in which they stand on both sides, as many as there can be: the others have moved.
std::vector<bool> keepsOrder(const Partners& partners)
{
    std::vector<std::size_t> tails; // the ends of the best rows of each length
    std::vector<std::size_t> previous(partners.size(), SIZE_MAX);
    for (std::size_t i = 0; i < partners.size(); ++i)
    {
        if (partners[i] < 0) continue;
        const auto place = std::lower_bound(tails.begin(), tails.end(), partners[i],
                                            [&](std::size_t tail, int value) { return partners[tail] < value; });
        if (place != tails.begin()) previous[i] = *(place - 1);
        if (place == tails.end())
            tails.push_back(i);
        else
            *place = i;
    }
    std::vector<bool> keeps(partners.size(), false);
    for (std::size_t i = tails.empty() ? SIZE_MAX : tails.back(); i != SIZE_MAX; i = previous[i]) keeps[i] = true;
    return keeps;
}

bool isInOrder(const Partners& partners)
{
    const std::vector<bool> keeps = keepsOrder(partners);
    for (std::size_t i = 0; i < partners.size(); ++i)
        if (partners[i] >= 0 && !keeps[i]) return false;
    return true;
}

std::vector<bool> takenOf(const Partners& partners, std::size_t count)
{
    std::vector<bool> isTaken(count, false);
    for (const int partner : partners)
        if (partner >= 0) isTaken[static_cast<std::size_t>(partner)] = true;
    return isTaken;
}

std::string describe(const Trigger& trigger)
{
    std::string text = "trigger `" + trigger.name + "`";
    if (!trigger.value.empty()) text += " " + trigger.value;
    return text;
}

class Comparer
{
public:
    void compare(const Entries& before, const Entries& after)
    {
        const Partners partners = matchEntries(before, after);
        const std::vector<bool> keeps = keepsOrder(partners);
        for (std::size_t i = 0; i < before.size(); ++i)
        {
            const Entry& entry = *before[i];
            if (partners[i] < 0)
            {
                add("removed", entry, "`" + entry.name + "` removed at " + span(entry));
                continue;
            }
            const std::size_t place = static_cast<std::size_t>(partners[i]);
            compare(entry, *after[place]);
            if (!keeps[i])
                add("moved", entry,
                    head(entry) + "layer " +
                        (place == 0 ? std::string("to the bottom")
                                    : "to above `" + after[place - 1]->name + "` " + span(*after[place - 1])));
        }
        const std::vector<bool> isOld = takenOf(partners, after.size());
        for (std::size_t i = 0; i < after.size(); ++i)
            if (!isOld[i]) add("added", *after[i], "`" + after[i]->name + "` added at " + span(*after[i]));
    }

    std::vector<Difference> mDifferences;

private:
    static std::string span(const Entry& entry)
    {
        return readable(entry.showStart()) + "-" + readable(entry.showEnd());
    }
    static std::string head(const Entry& entry) { return "`" + entry.name + "` " + span(entry) + ": "; }

    void add(const char* kind, const Entry& entry, const std::string& text)
    {
        mDifferences.push_back({kind, entry.label(), entry.showStart(), text});
    }

    void tell(const Entry& entry, double time, const std::string& text)
    {
        mDifferences.push_back({"changed", entry.label(), time, head(entry) + text});
    }

    void compare(const Entry& before, const Entry& after)
    {
        if (meaning(before) == meaning(after)) return;
        if (before.name != after.name) tell(before, before.showStart(), "renamed to `" + after.name + "`");
        if (before.enabled != after.enabled) tell(before, before.showStart(), after.enabled ? "on" : "off");
        const float startBy = after.start - before.start;
        const float endBy = after.end - before.end;
        if (startBy != 0.0f && std::fabs(startBy - endBy) < 1e-4f)
        {
            const std::string by = readable(static_cast<double>(startBy));
            tell(before, before.showStart(),
                 by == "0" ? "moved by less than 0.001 s"
                           : "moved by " + std::string(startBy > 0.0f ? "+" : "") + by + " to " + span(after));
        }
        else
        {
            if (before.start != after.start)
                tell(before, before.showStart(), change("start", before.start, after.start));
            if (before.end != after.end) tell(before, before.showStart(), change("end", before.end, after.end));
        }
        compareTriggers(before, after);
        compareSplines(before, after);
        compare(before.children, after.children);
    }

    void compareTriggers(const Entry& before, const Entry& after)
    {
        const Partners partners = matchTriggers(before.triggers, after.triggers);
        for (std::size_t i = 0; i < before.triggers.size(); ++i)
        {
            const Trigger& trigger = before.triggers[i];
            const double time = before.showStart() + trigger.due(0);
            if (partners[i] < 0)
                tell(before, time, describe(trigger) + " at " + readable(time) + " s removed");
            else
                compareTrigger(before, trigger, after.triggers[static_cast<std::size_t>(partners[i])]);
        }
        const std::vector<bool> isOld = takenOf(partners, after.triggers.size());
        for (std::size_t i = 0; i < after.triggers.size(); ++i)
        {
            const double time = after.showStart() + after.triggers[i].due(0);
            if (!isOld[i]) tell(before, time, describe(after.triggers[i]) + " added at " + readable(time) + " s");
        }
        if (!isInOrder(partners)) tell(before, before.showStart(), "triggers in another order");
    }

    void compareTrigger(const Entry& entry, const Trigger& before, const Trigger& after)
    {
        std::vector<std::string> changes;
        if (before.value != after.value) changes.push_back(change("value", before.value, after.value));
        if (before.start != after.start) changes.push_back(change("start", before.start, after.start));
        if (before.repeat != after.repeat)
            changes.push_back(change("repeat", std::to_string(before.repeat), std::to_string(after.repeat)));
        if (before.delay != after.delay && before.repeat > 1 && after.repeat > 1)
            changes.push_back(change("delay", before.delay, after.delay));
        const double time = entry.showStart() + before.due(0);
        if (!changes.empty())
            tell(entry, time, "trigger `" + before.name + "` at " + readable(time) + " s: " + join(changes, ", "));
    }

    void compareSplines(const Entry& before, const Entry& after)
    {
        const Partners partners = matchSplines(before.splines, after.splines);
        for (std::size_t i = 0; i < before.splines.size(); ++i)
        {
            const Spline& spline = before.splines[i];
            if (partners[i] < 0)
                tell(before, before.showStart(), "spline `" + spline.name + "` removed");
            else
                compareSpline(before, spline, after.splines[static_cast<std::size_t>(partners[i])]);
        }
        const std::vector<bool> isOld = takenOf(partners, after.splines.size());
        for (std::size_t i = 0; i < after.splines.size(); ++i)
            if (!isOld[i]) tell(before, after.showStart(), "spline `" + after.splines[i].name + "` added");
        if (!isInOrder(partners)) tell(before, before.showStart(), "splines in another order");
    }

    void compareSpline(const Entry& entry, const Spline& before, const Spline& after)
    {
        std::vector<std::string> changes;
        if (before.type != after.type) changes.push_back(change("type", before.type, after.type));
        const auto number = [&](const char* what, float a, float b) {
            if (a != b) changes.push_back(change(what, a, b));
        };
        number("timescale", before.timeScale, after.timeScale);
        number("timeoffset", before.timeOffset, after.timeOffset);
        number("valuescale", before.valueScale, after.valueScale);
        number("valueoffset", before.valueOffset, after.valueOffset);

        const Partners partners = matchKeys(before.keys, after.keys);
        for (std::size_t i = 0; i < before.keys.size(); ++i)
        {
            const Key& key = before.keys[i];
            const std::string where = "key at " + readable(entry.showStart() + before.local(key)) + " s";
            if (partners[i] < 0)
            {
                changes.push_back(where + " removed");
                continue;
            }
            const Key& other = after.keys[static_cast<std::size_t>(partners[i])];
            if (key.time != other.time) changes.push_back(change(where + ": time", key.time, other.time));
            if (key.value != other.value) changes.push_back(change(where + ":", key.value, other.value));
        }
        const std::vector<bool> isOld = takenOf(partners, after.keys.size());
        for (std::size_t i = 0; i < after.keys.size(); ++i)
            if (!isOld[i])
                changes.push_back("key added at " + readable(entry.showStart() + after.local(after.keys[i])) +
                                  " s: " + shortest(after.keys[i].value));
        if (!isInOrder(partners)) changes.push_back("keys in another order");
        if (!changes.empty()) tell(entry, entry.showStart(), "spline `" + before.name + "`: " + join(changes, ", "));
    }
};

} // namespace

std::vector<Difference> differences(const Score& before, const Score& after)
{
    Comparer comparer;
    comparer.compare(before.entries(), after.entries());
    return std::move(comparer.mDifferences);
}

} // namespace Timeline
