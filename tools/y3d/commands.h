#pragma once

#include <map>
#include <string>
#include <vector>

// The subcommands of the tool. Each gets the files and options that the command line named (options by their name with
// the dashes; the value is empty where the option takes none) and returns the exit status. What goes wrong with a file
// is thrown as y3d::Exception: `main` reports it and ends with STATUS_ERRORS.

enum Status
{
    STATUS_FINE = 0,
    STATUS_WARNINGS = 1,
    STATUS_ERRORS = 2 // also a file that cannot be read or written, and a wrong command line
};

struct Arguments
{
    std::vector<std::string> files;
    std::map<std::string, std::string> options;

    bool has(const std::string& option) const { return options.count(option) != 0; }
};

// The number that an option has, or the fallback. Throws y3d::Exception for what is none in the range.
double numberOf(const Arguments& arguments, const std::string& option, double fallback, double smallest,
                double largest);

// Throws y3d::Exception where a file is -, or IN and OUT are one file, for commands that read one format and write
// another.
void refuseStreams(const Arguments& arguments, const char* command);

int runInfo(const Arguments& arguments);
int runCheck(const Arguments& arguments);
int runExport(const Arguments& arguments);
int runImport(const Arguments& arguments);
int runCopy(const Arguments& arguments);
int runOptimize(const Arguments& arguments);
int runStrips(const Arguments& arguments);
int runView(const Arguments& arguments);
