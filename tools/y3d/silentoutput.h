#pragma once

// The standard output leads nowhere while this lives.
class SilentOutput
{
public:
    SilentOutput();
    ~SilentOutput();
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;

private:
    int mOutput;
};
