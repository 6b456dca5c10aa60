#include "timemap.h"

#include "numbers.h"

#include <cmath>
#include <limits>
#include <vector>

namespace Timeline
{

namespace
{

const double SAME_TIME = 1e-6; // seconds; nearer times are one
const int MANY = 100000;       // firings of a trigger that are followed one by one

// The number in the text, to its last digit: sums of these round to the single that the author means.
double exact(const Node& node, const char* attribute)
{
    return readDouble(node.value(attribute));
}

class Mapper
{
public:
    Mapper(Edits& edits, const TimeMap& map, bool force) : mEdits(edits), mMap(map), mForce(force) {}

    // `origin` is the show time of the parent's zero, before and after.
    void mapEntry(const Entry& entry, double originBefore, double originAfter)
    {
        const Node& node = *entry.node;
        const double start = originBefore + exact(node, "start");
        const double end = originBefore + exact(node, "end");
        const double newStart = mMap.point(start);
        double newEnd = mMap.end(end);
        if (end > start && !(newEnd > newStart))
            refuse(entry.label() + " would end when it starts or before (" + readable(newStart) + "-" +
                   readable(newEnd) + ")");

        if (!mMap.concerns(start, end)) return;
        mEdits.setNumber(node, "start", static_cast<float>(newStart - originAfter));
        mEdits.setNumber(node, "end", static_cast<float>(newEnd - originAfter));
        if (std::fabs(newStart - start) > SAME_TIME) ++mChanges.moved;
        if (std::fabs(newEnd - newStart - (end - start)) > SAME_TIME) ++mChanges.stretched;

        for (const Trigger& trigger : entry.triggers) mapTrigger(trigger, start, newStart);
        for (const Spline& spline : entry.splines) mapSpline(entry, spline, start, newStart);
        for (const std::unique_ptr<Entry>& child : entry.children) mapEntry(*child, start, newStart);
    }

    TimeChanges mChanges;

private:
    void refuse(const std::string& trouble) const
    {
        if (!mForce) throw Failure(trouble + "; --force does it all the same");
    }

    void mapTrigger(const Trigger& trigger, double start, double newStart)
    {
        const Node& node = *trigger.node;
        const double first = exact(node, "start");
        const double delay = node.value("delay").empty() ? static_cast<double>(trigger.delay) : exact(node, "delay");
        const auto mapped = [&](int n) { return mMap.point(start + first + n * delay) - newStart; };

        // The firings in runs of even distance.
        std::vector<int> runs = {0};
        const int count = trigger.repeat <= MANY ? trigger.repeat : 1;
        for (int n = 1; n < count; ++n)
            if (std::fabs(mapped(n) - mapped(n - 1) - delay * mMap.slope) > SAME_TIME) runs.push_back(n);

        const float newFirst = static_cast<float>(mapped(0));
        const float newDelay = static_cast<float>(delay * mMap.slope);
        if (newFirst != trigger.start || runs.size() > 1) ++mChanges.triggers;
        mEdits.setNumber(node, "start", newFirst);
        if (trigger.repeat > 1 && newDelay != trigger.delay) mEdits.setAttribute(node, "delay", shortest(newDelay));
        if (runs.size() == 1) return;

        setRepeat(node, runs[1]);
        std::string more;
        for (std::size_t i = 1; i < runs.size(); ++i)
        {
            const int repeat = (i + 1 < runs.size() ? runs[i + 1] : count) - runs[i];
            std::string text = "<trigger " + writeAttribute("start", shortest(mapped(runs[i]))) + " " +
                               writeAttribute("name", trigger.name) + " " + writeAttribute("value", trigger.value);
            if (repeat > 1)
                text += " " + writeAttribute("repeat", std::to_string(repeat)) + " " +
                        writeAttribute("delay", shortest(newDelay));
            mEdits.insertBehind(node, text + "/>");
        }
    }

    void setRepeat(const Node& node, int repeat)
    {
        if (repeat > 1) return mEdits.setAttribute(node, "repeat", std::to_string(repeat));
        mEdits.removeAttribute(node, "repeat");
        mEdits.removeAttribute(node, "delay");
    }

    void mapSpline(const Entry& entry, const Spline& spline, double start, double newStart)
    {
        const double scale = spline.node->value("timescale").empty() ? 1.0 : exact(*spline.node, "timescale");
        const double offset = exact(*spline.node, "timeoffset");
        if (scale == 0.0) return;
        const double newOffset = offset * mMap.slope;
        mEdits.setNumber(*spline.node, "timeoffset", static_cast<float>(newOffset));
        float before = -std::numeric_limits<float>::infinity();
        float newBefore = before;
        for (const Key& key : spline.keys)
        {
            const double time = start + exact(*key.node, "time") * scale + offset;
            const float newTime = static_cast<float>((mMap.point(time) - newStart - newOffset) / scale);
            if (key.time >= before && newTime < newBefore)
                refuse("The keys of spline '" + spline.name + "' of " + entry.label() + " would lose their order at " +
                       readable(time));
            if (newTime != key.time) ++mChanges.keys;
            mEdits.setNumber(*key.node, "time", newTime);
            before = key.time;
            newBefore = newTime;
        }
    }

    Edits& mEdits;
    const TimeMap& mMap;
    const bool mForce;
};

std::string counted(int count, const char* one, const char* many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

} // namespace

std::string TimeChanges::text() const
{
    return counted(moved, "entry", "entries") + " moved, " + std::to_string(stretched) +
           " of another length; inside them " + counted(triggers, "trigger", "triggers") + " and " +
           counted(keys, "key", "keys") + " moved";
}

TimeMap shiftMap(double from, double to, double by)
{
    TimeMap map;
    map.point = [=](double time) { return time >= from - SAME_TIME && time < to - SAME_TIME ? time + by : time; };
    map.end = [=](double time) { return time > from + SAME_TIME && time <= to + SAME_TIME ? time + by : time; };
    map.concerns = [=](double start, double end) {
        return start >= from - SAME_TIME ? start < to - SAME_TIME : end > from + SAME_TIME;
    };
    return map;
}

TimeMap tempoMap(double fromTempo, double toTempo, double origin)
{
    TimeMap map;
    map.slope = fromTempo / toTempo;
    map.point = [=](double time) { return origin + (time - origin) * (fromTempo / toTempo); };
    map.end = map.point;
    return map;
}

TimeChanges mapTimes(const Score& score, Edits& edits, const TimeMap& map, bool force)
{
    Mapper mapper(edits, map, force);
    for (const std::unique_ptr<Entry>& entry : score.entries()) mapper.mapEntry(*entry, 0.0, 0.0);
    return mapper.mChanges;
}

} // namespace Timeline
