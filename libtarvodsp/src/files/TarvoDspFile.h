#pragma once

#include "text/TarvoDspString.h"

#include <cstdint>

namespace ondo
{
/// A path in the file system, held as an absolute, normalised path: a relative path is taken
/// from the current working directory when the value is made. A plain value, copied freely;
/// the file itself is only touched by the operations that say so. Any thread.
class File
{
public:
    /// The empty path, which names no file.
    File() = default;
    explicit File(const String& path);
    explicit File(const char* path) : File(String(path != nullptr ? path : "")) {}

    static File getCurrentWorkingDirectory();

    const String& getFullPathName() const { return fullPath; }
    /// The last part of the path, extension included.
    String getFileName() const;
    /// The last `.` of the file name and what follows it (".wav"), or empty.
    String getFileExtension() const;
    /// Compares the extension ignoring case; the leading dot of `extension` is optional, and an
    /// empty `extension` asks for a file name without one.
    bool hasFileExtension(const String& extension) const;
    /// The same path with its extension replaced (an empty `extension` removes it).
    File withFileExtension(const String& extension) const;
    File getParentDirectory() const;
    /// `relativePath` below this directory; an absolute `relativePath` stands for itself.
    File getChildFile(const String& relativePath) const;
    /// A file beside this one that does not exist yet, with "_temp" in its name.
    File getTemporaryFile() const;

    bool exists() const;
    /// True for a file, false for a directory.
    bool existsAsFile() const;
    bool isDirectory() const;
    /// True when the file or directory exists and this process may write to it.
    bool existsAndWritable() const;
    /// Bytes in the file; 0 when it is missing or not a file.
    std::int64_t getSize() const;

    /// True when nothing is left at the path afterwards (also when nothing was there).
    /// A directory is removed only when empty.
    bool deleteFile() const;
    /// Creates this directory and any missing parents; true when it exists afterwards.
    bool createDirectory() const;

    /// Prepares the path for a new file: creates the parent directory if needed, refuses a
    /// directory, refuses an existing file unless `overwrite` (then deletes it), and checks that
    /// the folder takes a new file. True when the file may be written; otherwise, when `failure`
    /// is given, it receives the reason. Touches the file system.
    bool makeReadyForWriting(bool overwrite, String* failure = nullptr) const;

    bool operator==(const File& other) const { return fullPath == other.fullPath; }
    bool operator!=(const File& other) const { return fullPath != other.fullPath; }

private:
    String fullPath;
};
} // namespace ondo
