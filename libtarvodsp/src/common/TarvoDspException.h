#pragma once

#include <exception>
#include <iosfwd>
#include <string>
#include <string_view>

namespace ondo
{
/// Where an exception was raised: a file name (path stripped) and a line. Building one
/// allocates nothing, so a location may be prepared on the audio thread.
struct SourceLocation
{
    SourceLocation() = default;
    /// Keeps only the file name of `path`, so that reports do not depend on the build
    /// machine. `path` must outlive the location: a literal such as __FILE__.
    SourceLocation(const char* path, int line);

    bool isEmpty() const { return file.empty(); }

    std::string_view file;
    int line = 0;
};

#define ONDO_SOURCE_LOCATION ::ondo::SourceLocation(__FILE__, __LINE__)

/// The one exception family of the library: a message and the place that raised it.
class Exception : public std::exception
{
public:
    /// With `report`, the report line goes to the error stream as the exception is built,
    /// unless `quiet` is set.
    Exception(std::string message, SourceLocation location = {}, bool report = true, bool quiet = false);
    ~Exception() override = default;

    const char* what() const noexcept override { return message.c_str(); }

    const std::string& getMessage() const { return message; }
    const SourceLocation& getLocation() const { return location; }

    /// "Exception occurred in "file" (line N): message", or "Exception occurred: message"
    /// when no location is known.
    std::string getReport() const;
    void print(std::ostream& stream) const;

    /// The same exception, re-located where it is raised again.
    Exception relocated(SourceLocation newLocation) const;

private:
    std::string message;
    SourceLocation location;
};

namespace exceptions
{
class NoSuchFile : public Exception
{
public:
    NoSuchFile(const std::string& path, SourceLocation location = {}, bool report = true, bool quiet = false);
};

class UnsupportedFile : public Exception
{
public:
    UnsupportedFile(const std::string& path, SourceLocation location = {}, bool report = true, bool quiet = false);
};

class ErrorReadingFile : public Exception
{
public:
    ErrorReadingFile(const std::string& path, SourceLocation location = {}, bool report = true, bool quiet = false);
};

class Unknown : public Exception
{
public:
    explicit Unknown(SourceLocation location = {}, bool report = true, bool quiet = false);
};
} // namespace exceptions

/// Runs `action` and translates whatever escapes it into the library's family:
/// an `Exception` is raised again with `location`, a standard exception with its
/// own text, anything else as `exceptions::Unknown`.
template <typename Action>
decltype(auto) rethrowAsOndoException(const SourceLocation& location, Action&& action)
{
    try
    {
        return action();
    }
    catch (const Exception& e)
    {
        throw e.relocated(location);
    }
    catch (const std::exception& e)
    {
        throw Exception(e.what(), location);
    }
    catch (...)
    {
        throw exceptions::Unknown(location);
    }
}
} // namespace ondo
