#include "commandline.h"

#include <algorithm>

namespace Timeline
{

namespace
{

const std::size_t MAX_COLUMNS = 80;

// The number of bytes of the UTF-8 character at `position`, 0 if there is none.
std::size_t characterLength(const std::string& text, std::size_t position)
{
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const unsigned first = byte(position);
    const std::size_t length = first < 0x80                    ? 1
                               : first >= 0xc2 && first < 0xe0 ? 2
                               : first >= 0xe0 && first < 0xf0 ? 3
                               : first >= 0xf0 && first < 0xf5 ? 4
                                                               : 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(position + i) & 0xc0) != 0x80) return 0;
    const unsigned second = byte(position + 1);
    const bool isOverlong = (first == 0xe0 && second < 0xa0) || (first == 0xf0 && second < 0x90);
    const bool isOutside = (first == 0xed && second > 0x9f) || (first == 0xf4 && second > 0x8f);
    return isOverlong || isOutside ? 0 : length;
}

class HelpFormatter : public CLI::Formatter
{
public:
    std::string make_footer(const CLI::App* app) const override
    {
        // The blank line before it is of the footer in newer versions of the library alone.
        const std::string standard = Formatter::make_footer(app);
        if (standard.empty()) return "";
        return (standard[0] == '\n' ? "\n" : "") + wrapped(app->get_footer()) + "\n";
    }
};

} // namespace

std::shared_ptr<CLI::Formatter> helpFormatter()
{
    auto formatter = std::make_shared<HelpFormatter>();
    formatter->label("SUBCOMMAND", "COMMAND");
    formatter->label("Positionals", "Arguments");
    return formatter;
}

CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& about, const std::string& details)
{
    CLI::App* const command = app.add_subcommand(name, about);
    command->footer(details);
    return command;
}

std::string wrapped(const std::string& text)
{
    std::string result;
    std::size_t column = 0;
    for (std::size_t i = 0; i < text.size();)
    {
        const std::size_t end = std::min(text.find_first_of(" \n", i), text.size());
        if (column > 0 && column + 1 + (end - i) > MAX_COLUMNS)
        {
            result += '\n';
            column = 0;
        }
        if (column > 0) result += ' ';
        result.append(text, i, end - i);
        column += end - i + (column > 0 ? 1 : 0);
        if (end < text.size() && text[end] == '\n')
        {
            result += '\n';
            column = 0;
        }
        i = end + 1;
    }
    return result;
}

void addShow(CLI::App& command, std::string& show)
{
    command.add_option("--show", show, "The folder of the show; without it, the current one")->type_name("FOLDER");
}

void addJson(CLI::App& command, bool& json)
{
    command.add_flag("--json", json, "Print the answer as JSON");
}

void Source::addTo(CLI::App& command)
{
    command.add_option("FILE", file, "The script, - for the standard input; without it, that of the show")
        ->type_name("");
    addShow(command, show);
}

Score Source::load() const
{
    if (!file.empty()) return Score::load(file);
    Show found(showFolder(show));
    const std::string name = found.script();
    Score score(found.readText(name), found.labelOf(name));
    if (score.document().root().name != "script") throw Failure(score.path() + " is no script");
    return score;
}

std::string Source::path() const
{
    if (!file.empty()) return file;
    const Show found(showFolder(show));
    const std::string name = found.script();
    const std::string path = found.pathOf(name);
    if (path.empty()) throw Failure("'" + name + "' lies in a zip; name an OUT");
    return path;
}

void Target::addTo(CLI::App& command)
{
    CLI::Option* const output =
        command.add_option("-o,--output", out, "Where the new script goes, - for the standard output");
    output->type_name("OUT");
    command.add_flag("-i,--in-place", inPlace, "Write it back into FILE")->excludes(output);
}

void Target::write(const std::string& text, const Source& source) const
{
    if (inPlace)
        writeFile(source.path(), text);
    else if (!out.empty())
        writeFile(out, text);
    else
        throw Failure("Where to? Say -o OUT or --in-place");
}

void Target::tell(const std::string& line) const
{
    std::fprintf(out == "-" ? stderr : stdout, "%s\n", line.c_str());
}

std::string jsonText(const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size();)
    {
        const std::size_t length = characterLength(text, i);
        if (length > 0)
        {
            result.append(text, i, length);
            i += length;
            continue;
        }
        const unsigned byte = static_cast<unsigned char>(text[i++]);
        result += static_cast<char>(0xc0 | byte >> 6);
        result += static_cast<char>(0x80 | (byte & 0x3f));
    }
    return result;
}

} // namespace Timeline
