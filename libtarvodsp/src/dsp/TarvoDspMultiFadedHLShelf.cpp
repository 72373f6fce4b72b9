#include "dsp/TarvoDspMultiFadedHLShelf.h"

#include <algorithm>
#include <cstdio>

#include <cstring>

namespace ondo
{
MultiFadedHLShelf::MultiFadedHLShelf(std::uint32_t numChannels)
{
    setNumChannels(numChannels);
    setCrossfadeTime(shelfCrossfadeTimeMs);
    setParameters(HLShelfParameters{}, false);
    clear();
}

void MultiFadedHLShelf::setNumChannels(std::uint32_t n)
{
    MultichannelProcessor<FadedHLShelf>::setNumChannels(n);
    batch.reserve(n);
    begun.resize(n);
    for (FadedHLShelf* channel : channels)
        channel->shareChangeCounter(&changes);
    changes.fetch_add(1, std::memory_order_release);
}

bool MultiFadedHLShelf::beginBlock()
{
    blockBegun = true;
    // Read before the round, so that a hand-over landing during it is seen next block.
    const std::uint32_t now = changes.load(std::memory_order_acquire);
    // A steady channel's stage update does nothing and gives the same instance until a
    // hand-over: the last round's answers stand.
    quietBlock = steadySeen && now == changesSeen && activitySeen.matches(getInletsAnalyzer());
    if (quietBlock)
        return transparentSeen;
    bool transparent = true;
    bool steady = true;
    for (std::uint32_t c = 0; c < channels.size(); ++c)
    {
        // A silent channel's stage waits, as its own block would leave it.
        const bool live = isInletActive(c) && isOutletConnected(c);
        begun[c] = live ? channels[c]->beginBlock() : nullptr;
        transparent = transparent && begun[c] != nullptr && begun[c]->isTransparent();
        steady = steady && (!live || begun[c] != nullptr);
    }
    activitySeen.take(getInletsAnalyzer());
    changesSeen = now;
    steadySeen = steady;
    transparentSeen = transparent;
    return transparent;
}

BiquadIPP* const* MultiFadedHLShelf::beginChannelBlocks()
{
    beginBlock();
    blockBegun = false;
    passedWhole = false;
    return begun.data();
}

void MultiFadedHLShelf::passBlock()
{
    // After a whole pass and a quiet start every section's memory is already silent.
    if (!(quietBlock && passedWhole))
        for (std::uint32_t c = 0; c < channels.size(); ++c)
            begun[c]->passBlock();
    passedWhole = true;
    blockBegun = false;
}

void MultiFadedHLShelf::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (!blockBegun)
        beginBlock();
    blockBegun = false;
    passedWhole = false;
    for (std::uint32_t c = 0; c < channels.size(); ++c)
    {
        if (!isInletActive(c) || !isOutletConnected(c))
        {
            std::memset(outputs[c], 0, numSamples * sizeof(float));
            continue;
        }
        BiquadIPP* alone = begun[c];
        if (alone != nullptr && alone->isTransparent() && outputs[c] == inputs[c])
            alone->passBlock();
        else
            batch.addBegun(*channels[c], alone, outputs[c], inputs[c], numSamples);
    }
    batch.run(numSamples);
}

void MultiFadedHLShelf::setParameters(const HLShelfParameters& parameters, bool immediately)
{
    for (FadedHLShelf* channel : channels)
        channel->setParameters(parameters, immediately);
}

void MultiFadedHLShelf::setParameters(std::uint32_t channel, const HLShelfParameters& parameters, bool immediately)
{
    if (channel < channels.size())
        channels[channel]->setParameters(parameters, immediately);
}

void MultiFadedHLShelf::setCrossfadeTime(float ms)
{
    for (FadedHLShelf* channel : channels)
        channel->setCrossfadeTime(ms);
}

bool MultiFadedHLShelf::processOscMessage(const OSCMessage& message, std::int32_t& context)
{
    if (handleProcessorMessages(message, context))
        return true;
    if (message.matches("/crossfadetime") && message.matchesSingle('n'))
        setCrossfadeTime(std::max(message.getFloat(0), 0.0f));
    else if (message.matches("/params") && message.matchesList("nnnnnn"))
    {
        HLShelfParameters parameters;
        bool changed = false;
        processHLShelfParametersMessage(message, parameters, changed);
        setParameters(parameters, false);
    }
    else
        return false;
    return true;
}

OSCBundle MultiFadedHLShelf::getState() const
{
    OSCBundle state = getProcessorState();
    if (getNumChannels() == 0)
        return state;
    state.add("/crossfadetime", getChannel(0).getCrossfadeTime());
    addHLShelfParametersState(state, "", getChannel(0).getParameters());
    return state;
}

OscDocumentation MultiFadedHLShelf::getDocumentation() const
{
    return {{"/crossfadetime", "[number]", "sets the crossfade time (in ms)"},
            {"/params", "[G0 Gl Gm Gh fl fh]", "sets the gains (in dB) and the crossover frequencies (in Hz)"}};
}

String MultiFadedHLShelf::getParametersText() const
{
    const HLShelfParameters p = getNumChannels() > 0 ? getChannel(0).getParameters() : HLShelfParameters{};
    char text[256];
    std::snprintf(text, sizeof text, "G0 = %.2f, Gl = %.2f, Gm = %.2f, Gh = %.2f, fl = %.0f, fh = %.0f",
                  static_cast<double>(p.G0), static_cast<double>(p.Gl), static_cast<double>(p.Gm),
                  static_cast<double>(p.Gh), static_cast<double>(p.fl), static_cast<double>(p.fh));
    return text;
}
} // namespace ondo
