#include "files/TarvoDspFile.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace ondo
{
namespace fs = std::filesystem;

namespace
{
constexpr char separator = static_cast<char>(fs::path::preferred_separator);

String normalised(const fs::path& path)
{
    std::error_code error;
    fs::path absolute = fs::absolute(path, error);
    if (error)
        absolute = path;
    String text = absolute.lexically_normal().string();
    // "a/b/" and "a/b" name the same thing; the root keeps its only separator.
    while (text.size() > 1 && text.back() == separator)
        text.pop_back();
    return text;
}

std::size_t fileNameStart(const String& path)
{
    const auto slash = path.find_last_of(separator);
    return slash == String::npos ? 0 : slash + 1;
}

/// Position of the extension's dot, or npos: only a dot after the last separator counts.
std::size_t extensionDot(const String& path)
{
    const auto dot = path.find_last_of('.');
    return dot == String::npos || dot < fileNameStart(path) ? String::npos : dot;
}
} // namespace

File::File(const String& path) : fullPath(path.empty() ? String() : normalised(fs::path(path)))
{
}

File File::getCurrentWorkingDirectory()
{
    std::error_code error;
    const fs::path cwd = fs::current_path(error);
    return error ? File() : File(cwd.string());
}

String File::getFileName() const
{
    return fullPath.substr(fileNameStart(fullPath));
}

String File::getFileExtension() const
{
    const auto dot = extensionDot(fullPath);
    return dot == String::npos ? String() : fullPath.substr(dot);
}

bool File::hasFileExtension(const String& extension) const
{
    const auto dot = extensionDot(fullPath);
    if (extension.empty())
        return dot == String::npos;
    if (dot == String::npos)
        return false;
    const String wanted = extension.front() == '.' ? extension.substr(1) : extension;
    return StringHelper::toLowerCase(fullPath.substr(dot + 1)) == StringHelper::toLowerCase(wanted);
}

File File::withFileExtension(const String& extension) const
{
    if (fullPath.empty())
        return {};
    const auto dot = extensionDot(fullPath);
    String stem = dot == String::npos ? fullPath : fullPath.substr(0, dot);
    if (!extension.empty() && extension.front() != '.')
        stem += '.';
    return File(stem + extension);
}

File File::getParentDirectory() const
{
    if (fullPath.empty())
        return {};
    return File(fs::path(fullPath).parent_path().string());
}

File File::getChildFile(const String& relativePath) const
{
    if (!relativePath.empty() && fs::path(relativePath).is_absolute())
        return File(relativePath);
    return File((fs::path(fullPath) / relativePath).string());
}

File File::getTemporaryFile() const
{
    // Process id, a counter and the clock make a name that no other writer is likely to pick.
    static std::atomic<unsigned> counter{0};
    const auto dot = extensionDot(fullPath);
    const String stem = dot == String::npos ? fullPath : fullPath.substr(0, dot);
    const String extension = dot == String::npos ? String() : fullPath.substr(dot);
    for (;;)
    {
        const auto ticks = static_cast<unsigned long long>(std::chrono::steady_clock::now().time_since_epoch().count());
        const File candidate(stem + "_temp" + std::to_string(::getpid()) + "_" +
                             std::to_string(counter.fetch_add(1, std::memory_order_relaxed)) + "_" +
                             std::to_string(ticks % 100000) + extension);
        if (!candidate.exists())
            return candidate;
    }
}

bool File::exists() const
{
    std::error_code error;
    return !fullPath.empty() && fs::exists(fullPath, error);
}

bool File::existsAsFile() const
{
    std::error_code error;
    return !fullPath.empty() && fs::exists(fullPath, error) && !fs::is_directory(fullPath, error);
}

bool File::isDirectory() const
{
    std::error_code error;
    return !fullPath.empty() && fs::is_directory(fullPath, error);
}

bool File::existsAndWritable() const
{
    return exists() && ::access(fullPath.c_str(), W_OK) == 0;
}

std::int64_t File::getSize() const
{
    std::error_code error;
    if (!existsAsFile())
        return 0;
    const auto size = fs::file_size(fullPath, error);
    return error ? 0 : static_cast<std::int64_t>(size);
}

bool File::deleteFile() const
{
    if (fullPath.empty())
        return true;
    std::error_code error;
    fs::remove(fullPath, error);
    return !exists();
}

bool File::createDirectory() const
{
    if (fullPath.empty())
        return false;
    std::error_code error;
    fs::create_directories(fullPath, error);
    return isDirectory();
}

bool File::makeReadyForWriting(bool overwrite, String* failure) const
{
    auto fail = [failure](String reason) {
        if (failure != nullptr)
            *failure = std::move(reason);
        return false;
    };
    if (fullPath.empty())
        return fail("Cannot write to an empty file name");
    const File folder = getParentDirectory();
    if (!folder.isDirectory() && !folder.createDirectory())
        return fail("Cannot create directory " + folder.getFullPathName());
    if (isDirectory())
        return fail(fullPath + " is a folder");
    if (exists())
    {
        if (!overwrite)
            return fail("File already exists " + fullPath);
        if (!deleteFile())
            return fail("Error deleting " + fullPath);
    }
    // Write permission bits do not tell everything (read-only mounts, quotas, ACLs): a real
    // file written and removed does.
    const File probe = getTemporaryFile();
    std::FILE* handle = std::fopen(probe.fullPath.c_str(), "wb");
    bool writable = handle != nullptr && std::fputc(0, handle) != EOF;
    if (handle != nullptr)
        writable = std::fclose(handle) == 0 && writable;
    probe.deleteFile();
    if (!writable)
        return fail("Couldnt create or write in folder " + folder.getFullPathName());
    return true;
}
} // namespace ondo
