#include "commands.h"

#include "y3d_exception.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

double numberOf(const Arguments& arguments, const std::string& option, double fallback, double smallest, double largest)
{
    if (!arguments.has(option)) return fallback;
    const std::string& text = arguments.options.at(option);
    char* end;
    const double number = std::strtod(text.c_str(), &end);
    if (text.empty() || *end || !(number >= smallest && number <= largest))
        throw y3d::Exception("%s takes a number from %g to %g", option.c_str(), smallest, largest);
    return number;
}

void refuseStreams(const Arguments& arguments, const char* command)
{
    for (const std::string& file : arguments.files)
    {
        if (file == "-") throw y3d::Exception("%s takes files by their names, not -", command);
    }
    std::error_code absent; // of a file that is still to come
    if (std::filesystem::equivalent(arguments.files[0], arguments.files[1], absent))
        throw y3d::Exception("%s: %s does not write over the file that it reads", arguments.files[0].c_str(), command);
}
