#pragma once

#include <stdexcept>

namespace Timeline
{

// What a command cannot do, said in one line. The program prints it and ends with status 2.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Exit statuses of all commands.
const int STATUS_FINE = 0;
const int STATUS_FINDINGS = 1; // findings or differences
const int STATUS_FAILED = 2;

} // namespace Timeline
