// The WAV reader on any bytes: a file either reads or is refused with an AudioFileError.

#include "WavFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // The reader takes a path: the input goes to a file of this process's own.
    static const std::string path = "/tmp/tarvoverb-wavfuzz-" + std::to_string(getpid()) + ".wav";
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    try
    {
        tarvo::render::readAudioFile(path);
    }
    catch (const tarvo::render::AudioFileError&)
    {
    }
    return 0;
}
