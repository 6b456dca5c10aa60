// The commands merge, extract and set.

#include "commands.h"

#include "commandline.h"
#include "edits.h"
#include "numbers.h"
#include "selection.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace Timeline
{

namespace
{

// What lies in the root of `score`, comments included, with its outer entries moved in time.
std::string contents(const Score& score, double by)
{
    Edits moved(score.document());
    for (const std::unique_ptr<Entry>& entry : score.entries())
        for (const char* attribute : {"start", "end"})
            moved.setNumber(*entry->node, attribute,
                            static_cast<float>(readDouble(entry->node->value(attribute)) + by));
    const Node& root = score.document().root();
    std::string text = moved.applyTo({root.open.end, root.close.begin});
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ' || text.back() == '\t'))
        text.pop_back();
    return text;
}

// Removes all outer entries but the chosen ones, and the comments that stand before what goes. Of the blank lines
// around what goes one stays.
void keepOnly(const Score& score, const std::set<const Node*>& kept, Edits& edits)
{
    const Document& document = score.document();
    std::size_t begin = document.root().open.end; // what lies between here and the next node to stay goes
    const Node* comments = nullptr;               // the first of those before the next tag
    bool goes = false;                            // the tag before was removed
    for (const std::unique_ptr<Node>& node : document.root().children)
    {
        if (node->kind == Node::Kind::COMMENT && !comments) comments = node.get();
        if (node->kind != Node::Kind::TAG) continue;
        if (kept.count(node.get()) > 0)
        {
            const Node& first = comments ? *comments : *node;
            if (goes)
                edits.replace({begin, first.open.begin}, (begin == document.root().open.end ? "\n" : "\n\n") +
                                                             document.indentAt(first.open.begin));
            begin = node->span().end;
        }
        goes = kept.count(node.get()) == 0;
        comments = nullptr;
    }
    if (goes) edits.replace({begin, document.root().close.begin}, "\n");
}

} // namespace

void addMerge(CLI::App& app, int&)
{
    struct Options
    {
        std::string first;
        std::string second;
        double at = 0.0;
        Target target;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(app, "merge", "Put the entries of a second script over those of a first.",
                                         "The second script's entries become the upper layers, with its "
                                         "comments.\nExample, an outro at 208 s: timeline merge show.xml "
                                         "outro.xml --at 208 -o whole.xml");
    command->add_option("A", options->first, "The first script")->required()->type_name("");
    command->add_option("B", options->second, "The second script")->required()->type_name("");
    command->add_option("--at", options->at, "The time in A at which B begins, 0 at first")->type_name("T");
    options->target.addTo(*command);
    command->callback([options] {
        if (!std::isfinite(options->at)) throw Failure("--at is a finite number");
        const Score first = Score::load(options->first);
        const Score second = Score::load(options->second);
        const Node& root = first.document().root();
        const Span close = root.close;
        Edits edits(first.document());
        std::size_t end = close.begin;
        while (end > root.open.end &&
               (first.document().text()[end - 1] == ' ' || first.document().text()[end - 1] == '\t' ||
                first.document().text()[end - 1] == '\n'))
            --end;
        edits.replace({end, close.begin}, contents(second, options->at) + "\n");
        options->target.write(edits.apply(), Source{options->first, ""});
    });
}

void addExtract(CLI::App& app, int&)
{
    struct Options
    {
        Source source;
        Target target;
        std::vector<std::string> entries;
        double from = -std::numeric_limits<double>::infinity();
        double to = std::numeric_limits<double>::infinity();
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(
        app, "extract", "Make a script of some entries.",
        "Chosen are whole outer entries: those named, or without a name all, of them those that run between --from and "
        "--to. Times stay.\nExample: timeline extract --from 48 --to 80 -f data/glacier.xml -o middle.xml");
    command->add_option("ENTRY", options->entries, ENTRY_HELP)->type_name("");
    command->add_option("-f,--file", options->source.file, "The script; without it, that of the show")
        ->type_name("FILE");
    addShow(*command, options->source.show);
    options->target.addTo(*command);
    command->add_option("--from", options->from, "Only what runs at or behind this time")->type_name("T");
    command->add_option("--to", options->to, "Only what starts before this time")->type_name("T2");
    command->callback([options] {
        const Score score = options->source.load();
        std::vector<const Entry*> chosen;
        if (options->entries.empty())
            for (const std::unique_ptr<Entry>& entry : score.entries()) chosen.push_back(entry.get());
        else
            chosen = select(score, options->entries);
        std::set<const Node*> kept;
        for (const Entry* entry : chosen)
        {
            while (entry->parent) entry = entry->parent;
            if (entry->showEnd() > options->from && entry->showStart() < options->to) kept.insert(entry->node);
        }
        Edits edits(score.document());
        keepOnly(score, kept, edits);
        options->target.write(edits.apply(), options->source);
    });
}

void addSet(CLI::App& app, int&)
{
    struct Options
    {
        std::string path;
        std::string value;
        Source source;
        Target target;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(
        app, "set", "Set a single value.",
        "PATH leads from an entry to the value: cubes@56/start, cubes@56/alpha/type, cubes@56/alpha/key[2]/value, "
        "flash@16/r/value, ball/trigger[4]/start. An entry is named by its number, its NAME or NAME@TIME, a trigger or "
        "spline by its name, with [2] for the second of that name, or as trigger[2], spline[2]; effect[2] is an entry "
        "inside. Numbers count from 1; times here are those that stand in the script.\n"
        "Example: timeline set cubes@56/alpha/key[2]/value 8.5 -i");
    command->add_option("PATH", options->path, "Where")->required()->type_name("");
    command->add_option("VALUE", options->value, "What")->required()->type_name("");
    options->source.addTo(*command);
    options->target.addTo(*command);
    command->callback([options] {
        const Score score = options->source.load();
        const Place place = findPlace(score, options->path);
        const std::string& attribute = place.attribute;
        const bool isText = attribute == "name" || attribute == "type" || attribute == "state" ||
                            (attribute == "value" && place.node->name == "trigger");
        if (!isText && !(attribute == "repeat" ? isWholeNumber(options->value) : isNumber(options->value)))
            throw Failure(attribute + " is a number, not '" + options->value + "'");
        if (attribute == "state" && options->value != "on" && options->value != "off")
            throw Failure("state is on or off");
        const bool isShort = !isText && attribute != "repeat";
        Edits edits(score.document());
        edits.setAttribute(*place.node, attribute, isShort ? shortest(readFloat(options->value)) : options->value);
        options->target.write(edits.apply(), options->source);
    });
}

} // namespace Timeline
