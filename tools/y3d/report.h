#pragma once

#include <string>
#include <vector>

// What is found in a scene file: errors end the player, warnings it passes over. Findings behind the first thousand are
// only counted, since nobody reads them.
struct Report
{
    struct Finding
    {
        bool isError;
        std::string object;
        std::string reason;
    };

    static const std::size_t MAX_FINDINGS = 1000;

    void add(bool isError, const std::string& object, const std::string& reason)
    {
        (isError ? numErrors : numWarnings) += 1;
        if (findings.size() < MAX_FINDINGS) findings.push_back({isError, object, reason});
    }

    std::vector<Finding> findings;
    std::size_t numErrors = 0;
    std::size_t numWarnings = 0;
};
