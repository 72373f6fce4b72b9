// Runs a benchmark room for a given number of blocks after its warm-up, so that an
// instruction counter can tell the cost of one block: the difference between two counts
// over the difference of their blocks leaves out the building and the warm-up.

#include "BenchRoom.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

namespace
{
/// A whole count, or an error that names the text.
long countFrom(const char* text)
{
    long value = 0;
    const char* end = text + std::strlen(text);
    const auto [at, error] = std::from_chars(text, end, value);
    if (error != std::errc() || at != end || value < 0)
        throw std::invalid_argument(std::string("not a count: ") + text);
    return value;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 6)
    {
        std::fprintf(stderr, "usage: %s SOURCES SPEAKERS INTERNALS ROOM BLOCKS\n", argv[0]);
        return 2;
    }
    try
    {
        const auto sources = static_cast<std::uint32_t>(countFrom(argv[1]));
        const auto speakers = static_cast<std::uint32_t>(countFrom(argv[2]));
        const auto internals = static_cast<std::uint32_t>(countFrom(argv[3]));
        const std::int64_t room = countFrom(argv[4]);
        const long blocks = countFrom(argv[5]);
        tarvo::bench::Room verb(sources, speakers, internals, room);
        for (long b = 0; b < blocks; ++b)
            verb.block();
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
