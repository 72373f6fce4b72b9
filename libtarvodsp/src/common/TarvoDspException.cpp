#include "common/TarvoDspException.h"

#include <iostream>
#include <sstream>

namespace ondo
{
SourceLocation::SourceLocation(const char* path, int lineNumber) : line(lineNumber)
{
    const std::string_view text = path != nullptr ? path : "";
    const auto slash = text.find_last_of("/\\");
    file = slash == std::string_view::npos ? text : text.substr(slash + 1);
}

Exception::Exception(std::string text, SourceLocation where, bool report, bool quiet)
    : message(std::move(text)), location(std::move(where))
{
    if (report && !quiet)
        std::cerr << "ondo >> " << getReport() << std::endl;
}

std::string Exception::getReport() const
{
    std::ostringstream text;
    print(text);
    return text.str();
}

void Exception::print(std::ostream& stream) const
{
    if (location.isEmpty())
        stream << "Exception occurred: " << message;
    else
        stream << "Exception occurred in \"" << location.file << "\" (line " << location.line << "): " << message;
}

Exception Exception::relocated(SourceLocation newLocation) const
{
    Exception copy(*this);
    copy.location = std::move(newLocation);
    return copy;
}

namespace exceptions
{
namespace
{
std::string quotedPath(const std::string& path)
{
    return "\"" + path + "\"";
}
} // namespace

NoSuchFile::NoSuchFile(const std::string& path, SourceLocation location, bool report, bool quiet)
    : Exception("Could not find file " + quotedPath(path), std::move(location), report, quiet)
{
}

UnsupportedFile::UnsupportedFile(const std::string& path, SourceLocation location, bool report, bool quiet)
    : Exception("Could not open file " + quotedPath(path) + ". Unsupported format?", std::move(location), report, quiet)
{
}

ErrorReadingFile::ErrorReadingFile(const std::string& path, SourceLocation location, bool report, bool quiet)
    : Exception("Error reading file " + quotedPath(path), std::move(location), report, quiet)
{
}

Unknown::Unknown(SourceLocation location, bool report, bool quiet)
    : Exception("Unknown exception", std::move(location), report, quiet)
{
}
} // namespace exceptions
} // namespace ondo
