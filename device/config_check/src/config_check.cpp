#include "config_check.h"

#include <libxml/parser.h>

#include "config_check_parts.h"
#include "program_files.h"

namespace Tarvo::Emu {

namespace ConfigCheckParts {
std::string Logs(const std::string& message)
{
    return "(the service logs \"" + message + "\")";
}
}  // namespace ConfigCheckParts

std::string DefaultConfigSchema()
{
    return OwnProgramFiles().configSchema;
}

ConfigCheck CheckConfigFile(const std::string& path, const std::string& schemaPath)
{
    using namespace ConfigCheckParts;
    ConfigCheck check;
    Findings read;
    ReadTables tables;
    if (xmlDocPtr doc = ParseLikeTheService(path, &check.findings); doc != nullptr) {
        // Read before the schema sees the document, so nothing it might add is read; told after it.
        check.loads = ReadLikeTheService(doc, &tables, &read);
        ValidateAgainstSchema(doc, schemaPath, &check.findings);
        xmlFreeDoc(doc);
    }
    check.findings.insert(check.findings.end(), read.begin(), read.end());
    if (check.loads) {
        TellStart(tables, &check.findings);
        check.findings.push_back({0, "result: the service loads this file"});
    } else {
        TellStartWithoutConfig(&check.findings);
        check.findings.push_back({0, "result: the service does not load this file and starts without a configuration"});
    }
    return check;
}

std::string FormatFinding(const ConfigFinding& finding)
{
    return (finding.line > 0 ? std::to_string(finding.line) : "-") + ": " + finding.text;
}

}  // namespace Tarvo::Emu
