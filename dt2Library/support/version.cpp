#include "freeFunctions.h"

#include <string>

namespace ORBI_LUMO25D
{

namespace
{

const int majorVersion = 1;
const int minorVersion = 86;
const int revision = 557;
const bool bRelease = false; // belongs to the word in the version text

} // namespace

const char* getLumo2DVersion()
{
    // Local, so that it is there for the initialisers of the caller's globals, too.
    static const std::string text = std::string("Lumo ") + "2.5D" + ", " + "DEBUG" + ", v" +
                                    std::to_string(majorVersion) + "." + std::to_string(minorVersion) + "." +
                                    std::to_string(revision);
    return text.c_str();
}

int getMajorVersionNumber()
{
    return majorVersion;
}

int getMinorVersionNumber()
{
    return minorVersion;
}

int getRevisionNumber()
{
    return revision;
}

bool isRelease()
{
    return bRelease;
}

} // namespace ORBI_LUMO25D
