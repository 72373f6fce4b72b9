#include "files/TarvoDspFileReader.h"

#include <algorithm>
#include <sys/types.h>

namespace ondo
{
FileReader::FileReader(const File& f) : file(f)
{
    if (!file.existsAsFile())
        return;
    handle = std::fopen(file.getFullPathName().c_str(), "rb");
    if (handle == nullptr)
        return;
    // 64-bit offsets, so that files beyond 2 GB (RF64, long SOFA sets) have true lengths.
    if (::fseeko(handle, 0, SEEK_END) != 0 || (length = ::ftello(handle)) < 0 || ::fseeko(handle, 0, SEEK_SET) != 0)
    {
        std::fclose(handle);
        handle = nullptr;
        length = -1;
    }
}

FileReader::~FileReader()
{
    if (handle != nullptr)
        std::fclose(handle);
}

int FileReader::read(void* buffer, int bytes)
{
    if (handle == nullptr || bytes <= 0)
        return 0;
    if (needToSeek)
    {
        if (::fseeko(handle, static_cast<off_t>(position), SEEK_SET) != 0)
            return 0;
        handlePosition = position;
        needToSeek = false;
    }
    const std::size_t got = std::fread(buffer, 1, static_cast<std::size_t>(bytes), handle);
    handlePosition += static_cast<std::int64_t>(got);
    position = handlePosition;
    return static_cast<int>(got);
}

bool FileReader::setPosition(std::int64_t newPosition)
{
    if (handle == nullptr)
        return false;
    position = std::clamp<std::int64_t>(newPosition, 0, length);
    needToSeek = position != handlePosition;
    return true;
}
} // namespace ondo
