#include "check.h"

#include "commands.h"
#include "json.h"
#include "text.h"

#include <algorithm>
#include <cstdio>

namespace
{

Json reportJson(const Report& report, const std::string& name)
{
    Json findings = Json::array();
    for (const Report::Finding& finding : report.findings)
    {
        findings.push_back({{"severity", finding.isError ? "error" : "warning"},
                            {"object", jsonText(finding.object)},
                            {"reason", jsonText(finding.reason)}});
    }
    return {{"file", jsonText(name)},
            {"errors", report.numErrors},
            {"warnings", report.numWarnings},
            {"findings", findings}};
}

} // namespace

int statusOf(const Report& report)
{
    return report.numErrors != 0 ? STATUS_ERRORS : report.numWarnings != 0 ? STATUS_WARNINGS : STATUS_FINE;
}

int printReport(const Report& report, const std::string& name)
{
    for (const Report::Finding& finding : report.findings)
    {
        std::printf("%s: %s: %s\n", finding.isError ? "error" : "warning", finding.object.c_str(),
                    finding.reason.c_str());
    }
    const std::size_t numOthers = report.numErrors + report.numWarnings - report.findings.size();
    if (numOthers != 0) std::printf("%zu more are left out\n", numOthers);
    const std::string summary = report.findings.empty() ? "fine"
                                                        : counted(report.numErrors, "error", "errors") + ", " +
                                                              counted(report.numWarnings, "warning", "warnings");
    std::printf("%s: %s\n", name.c_str(), summary.c_str());
    return statusOf(report);
}

int runCheck(const Arguments& arguments)
{
    const std::string pictures = arguments.has("--pictures") ? arguments.options.at("--pictures") : "";
    int status = STATUS_FINE;
    Json reports = Json::array();
    for (const std::string& filename : arguments.files)
    {
        const SceneFile file(filename);
        const Report report = checkFile(file, pictures);
        status = std::max(status, statusOf(report));
        if (arguments.has("--json"))
            reports.push_back(reportJson(report, file.name));
        else
            printReport(report, file.name);
    }
    if (arguments.has("--json")) printJson(reports.size() == 1 ? reports[0] : reports);
    return status;
}
