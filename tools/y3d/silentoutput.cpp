#include "silentoutput.h"

#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

SilentOutput::SilentOutput()
{
    std::fflush(stdout);
    mOutput = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

SilentOutput::~SilentOutput()
{
    std::fflush(stdout);
    dup2(mOutput, STDOUT_FILENO);
    close(mOutput);
}
