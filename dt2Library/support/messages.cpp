#include "support/messages.h"

#include <fstream>
#include <iostream>

namespace ORBI_LUMO25D
{

namespace
{

void writeRaw(const std::string& text)
{
    std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
    std::cout.flush();
}

const char* const tag = "      [Lumo2D-Message] ";

} // namespace

void msgWarning(const std::string& functionName, const std::string& message)
{
    writeRaw("\n" + (tag + functionName) + ", WARNING: " + message + "\n\n");
}

void msgError(const std::string& functionName, const std::string& message)
{
    writeRaw("\n" + (tag + functionName) + ", ERROR: " + message + "\n\n");
}

void msgInfo(const std::string& functionName, const std::string& message)
{
    if (functionName.empty()) {
        writeRaw(std::string("\n") + tag + "INFO: " + message + "\n\n");
    } else {
        writeRaw("\n      " + functionName + ", INFO: " + message + "\n\n");
    }
}

void printLine(const std::string& text)
{
    writeRaw(text + "\n");
}

void logLine(const std::string& text)
{
    printLine(text);
    std::ofstream file("LUMO_LOG.txt"); // truncates: the file holds the last failure alone
    if (file) file << text << "\n";
}

void printBanner(const std::string& text)
{
    const std::string bar = std::string(71, '*') + "\n";
    writeRaw("\n\n" + bar + bar + std::string(15, ' ') + text + "\n" + bar + bar + "\n\n");
}

} // namespace ORBI_LUMO25D
