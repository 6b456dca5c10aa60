#pragma once

// While this lives, the standard output leads nowhere: the reader of scene files reports there what it does not know,
// which would get between a command's own lines. Where that is not to be had, the output stays as it is.
class SilentOutput
{
public:
    SilentOutput();
    ~SilentOutput();
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;

private:
    int mOutput; // a copy of the standard output, owned; -1 while that was not turned away
};
