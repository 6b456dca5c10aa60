// The commands format and merge-comments.

#include "commands.h"

#include "commandline.h"
#include "writer.h"

namespace Timeline
{

void addFormat(CLI::App& app, int& status)
{
    struct Options
    {
        Source source;
        Target target;
        bool check = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command = addCommand(
        app, "format", "Write a script as our house writes it.",
        "A tag a line, a tab a level, attributes in one order, the shortest numbers, defaults left out. Comments, "
        "unknown tags and single blank lines stay. The script means the same as before.\n"
        "Example: timeline format -i data/glacier.xml");
    options->source.addTo(*command);
    options->target.addTo(*command);
    command->add_flag("--check", options->check, "Write nothing; the exit status is 1 if it is written otherwise");
    command->callback([options, &status] {
        const Score score = options->source.load();
        const std::string text = format(score);
        if (!options->check)
            options->target.write(text, options->source);
        else if (text != score.document().text())
            status = STATUS_FINDINGS;
    });
}

void addMergeComments(CLI::App& app, int&)
{
    struct Options
    {
        std::string old;
        std::string saved;
        Target target;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const command =
        addCommand(app, "merge-comments", "Give a saved script the comments of the one that it was.",
                   "Ctrl+S in the running show drops all comments and writes numbers at full length. Entries that "
                   "still mean the same "
                   "come back as they stood in OLD, others are written anew with the comments of what is still in "
                   "them. --in-place "
                   "writes SAVED.\nExample: timeline merge-comments data/glacier.xml glacier.xml -o data/glacier.xml");
    command->add_option("OLD", options->old, "The script with its comments")->required()->type_name("");
    command->add_option("SAVED", options->saved, "The script that Ctrl+S wrote")->required()->type_name("");
    options->target.addTo(*command);
    command->callback([options] {
        const Score old = Score::load(options->old);
        const Score saved = Score::load(options->saved);
        options->target.write(mergeComments(old, saved), Source{options->saved, ""});
    });
}

} // namespace Timeline
