// Renders what the libraries can do today: an impulse on each input of the reverberator's
// unitary mixer, and the energy that reaches each output. Becomes the room renderer when
// the reverberator lands.

#include "reverb/QuorShuffle.h"
#include "text/TarvoDspVersion.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

int main(int argc, char** argv)
{
    unsigned numChannels = 8;
    if (argc > 1)
    {
        char* end = nullptr;
        const long value = std::strtol(argv[1], &end, 10);
        if (end == argv[1] || *end != '\0' || value < 1 || value > 64)
        {
            std::fprintf(stderr, "tarvoverb-render: channel count must be a whole number from 1 to 64, not \"%s\"\n",
                         argv[1]);
            return 2;
        }
        numChannels = static_cast<unsigned>(value);
    }

    std::printf("%s\n", ondo::getLibraryVersionLine(true).c_str());
    Quor::Shuffle shuffle(numChannels);
    std::printf("unitary mixer: %u channels, mode \"%s\"\n", numChannels, shuffle.getModeName().c_str());

    constexpr unsigned blockSize = 64;
    std::vector<std::vector<float>> in(numChannels, std::vector<float>(blockSize));
    std::vector<std::vector<float>> out(numChannels, std::vector<float>(blockSize));
    std::vector<float*> inPointers, outPointers;
    for (unsigned c = 0; c < numChannels; ++c)
    {
        inPointers.push_back(in[c].data());
        outPointers.push_back(out[c].data());
    }

    double worstEnergyError = 0.0;
    for (unsigned source = 0; source < numChannels; ++source)
    {
        for (unsigned c = 0; c < numChannels; ++c)
            in[c].assign(blockSize, 0.0f);
        in[source][0] = 1.0f;
        shuffle.processBlock(outPointers.data(), inPointers.data(), blockSize);
        double energy = 0.0;
        std::printf("impulse on input %2u ->", source + 1);
        for (unsigned c = 0; c < numChannels; ++c)
        {
            std::printf(" %+.4f", out[c][0]);
            energy += static_cast<double>(out[c][0]) * out[c][0];
        }
        std::printf("   energy %.6f\n", energy);
        worstEnergyError = std::max(worstEnergyError, std::abs(energy - 1.0));
    }
    std::printf("largest deviation from unit energy: %.3g\n", worstEnergyError);
    return 0;
}
