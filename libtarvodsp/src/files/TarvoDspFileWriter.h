#pragma once

#include "files/TarvoDspFile.h"
#include "files/TarvoDspOutputStream.h"

#include <cstdio>

namespace ondo
{
/// Writes a new file from its start (an existing one is truncated). Positions are 64-bit and
/// can move back over what was written, to fill in a header last. The file closes with the
/// writer; `close` reports whether everything reached the disk. Control thread.
class FileWriter : public OutputStream
{
public:
    enum class Mode
    {
        binary,
        text ///< the same bytes on POSIX systems; line ends are the caller's choice
    };

    /// Opens `file` for writing; `openedOk` tells whether that worked. Call
    /// `File::makeReadyForWriting` first for the checks and messages around it.
    explicit FileWriter(const File& file, Mode mode = Mode::binary);
    ~FileWriter() override;
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    bool openedOk() const { return handle != nullptr; }
    const File& getFile() const { return file; }

    bool write(const void* data, std::size_t bytes) override;
    std::int64_t getPosition() override;
    /// Clamped to 0 and to the end of what has been written.
    bool setPosition(std::int64_t position) override;
    bool flush() override;
    /// Flushes and closes; false when any write, the flush or the close failed. Further writes
    /// fail.
    bool close();

private:
    File file;
    std::FILE* handle = nullptr;
    std::int64_t end = 0; ///< bytes in the file so far
    bool failed = false;
};
} // namespace ondo
