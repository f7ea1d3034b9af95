#include "support/check.h"

#include "LumoException.h"
#include "support/functionName.h"
#include "support/messages.h"

#include <string>

namespace ORBI_LUMO25D
{

void failCondition(const char* condition, const char* pPrettyFunction, const char* file, int line)
{
    const std::string text = std::string("Condition [ ") + condition + " failed ]";
    msgError("* Lumo, ", text);
    logLine("* Lumo, " + text);
    printLine(std::string("  ") + file + ":" + std::to_string(line));
    printLine("  Function: " + qualifiedFunctionName(pPrettyFunction) + "()");
    throw LumoException();
}

} // namespace ORBI_LUMO25D
