#pragma once

#include "files/TarvoDspFile.h"
#include "files/TarvoDspInputStream.h"

#include <cstdio>

namespace ondo
{
/// Reads a file through a buffered handle. `setPosition` only records where to go; the seek
/// happens at the next read, so that repeated repositioning between reads costs nothing.
/// Sizes and positions are 64-bit. Control thread; one reader at a time.
class FileReader : public InputStream
{
public:
    /// Opens `file` for reading; `openedOk` tells whether that worked.
    explicit FileReader(const File& file);
    ~FileReader() override;
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;

    bool openedOk() const { return handle != nullptr; }
    const File& getFile() const { return file; }

    /// The length when the file was opened; -1 when it could not be opened.
    std::int64_t getTotalLength() override { return length; }
    bool isExhausted() override { return position >= length; }
    int read(void* buffer, int bytes) override;
    std::int64_t getPosition() override { return position; }
    /// Clamps to 0 and the length; the seek itself waits for the next read.
    bool setPosition(std::int64_t newPosition) override;

private:
    File file;
    std::FILE* handle = nullptr;
    std::int64_t length = -1;
    std::int64_t position = 0;       ///< where the next read starts, as the caller sees it
    std::int64_t handlePosition = 0; ///< where the handle stands
    bool needToSeek = false;
};
} // namespace ondo
