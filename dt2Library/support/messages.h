#ifndef LUMO25D_SUPPORT_MESSAGES_H
#define LUMO25D_SUPPORT_MESSAGES_H

#include <string>

namespace ORBI_LUMO25D
{

// Everything here goes to the standard output stream and is flushed. The bytes are written past the stream's
// formatting: whatever width, fill or number format the caller has set neither changes a message nor is used
// up by it.

/// Something the caller did has no effect or only a part of it. The text stands between two empty lines.
void msgWarning(const std::string& functionName, const std::string& message);
/// Something the caller asked for cannot be done.
void msgError(const std::string& functionName, const std::string& message);
/// A note. Without a function name it carries the library's tag, with one it does not.
void msgInfo(const std::string& functionName, const std::string& message);

/// Writes the text and a line end to the standard output, without empty lines around it.
void printLine(const std::string& text);

/// Prints the text as a line and makes it the only content of "LUMO_LOG.txt" in the current directory. If
/// that file can't be opened the text is printed only.
void logLine(const std::string& text);

/// The text in a frame of asterisks.
void printBanner(const std::string& text);

} // namespace ORBI_LUMO25D

#endif
