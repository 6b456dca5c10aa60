#include "silentoutput.h"

#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

SilentOutput::SilentOutput() : mOutput(-1)
{
    std::fflush(stdout);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0) return;
    mOutput = dup(STDOUT_FILENO);
    if (mOutput >= 0 && dup2(nowhere, STDOUT_FILENO) < 0)
    {
        close(mOutput);
        mOutput = -1;
    }
    close(nowhere);
}

SilentOutput::~SilentOutput()
{
    if (mOutput < 0) return;
    std::fflush(stdout);
    dup2(mOutput, STDOUT_FILENO);
    close(mOutput);
}
