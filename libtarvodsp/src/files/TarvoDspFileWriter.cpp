#include "files/TarvoDspFileWriter.h"

#include <algorithm>
#include <sys/types.h>

namespace ondo
{
FileWriter::FileWriter(const File& f, Mode mode) : file(f)
{
    if (!file.getFullPathName().empty())
        handle = std::fopen(file.getFullPathName().c_str(), mode == Mode::text ? "w" : "wb");
}

FileWriter::~FileWriter()
{
    close();
}

bool FileWriter::write(const void* data, std::size_t bytes)
{
    if (handle == nullptr)
        return false;
    if (bytes == 0)
        return true;
    const bool complete = std::fwrite(data, 1, bytes, handle) == bytes;
    failed = failed || !complete;
    end = std::max(end, getPosition());
    return complete;
}

std::int64_t FileWriter::getPosition()
{
    return handle == nullptr ? 0 : static_cast<std::int64_t>(::ftello(handle));
}

bool FileWriter::setPosition(std::int64_t position)
{
    if (handle == nullptr)
        return false;
    return ::fseeko(handle, static_cast<off_t>(std::clamp<std::int64_t>(position, 0, end)), SEEK_SET) == 0;
}

bool FileWriter::flush()
{
    if (handle == nullptr)
        return false;
    failed = failed || std::fflush(handle) != 0;
    return !failed;
}

bool FileWriter::close()
{
    if (handle == nullptr)
        return !failed;
    failed = std::fclose(handle) != 0 || failed;
    handle = nullptr;
    return !failed;
}
} // namespace ondo
