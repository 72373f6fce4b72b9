#include "reverb/QuorTarvoVerb.h"

#include "containers/TarvoDspBlockPieces.h"
#include "math/TarvoDspNonFinite.h"
#include "math/TarvoDspVectorPrimitives.h"
#include "reverb/QuorSourceSends.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quor
{
namespace
{
using namespace ondo::primitives;

constexpr float sectionGainGlideMs = 100.0f;
constexpr float distanceGainGlideMs = 30.0f;
constexpr float nearestDistance = 0.3f;
constexpr float farthestDistance = 100.0f;
constexpr float halfDegreeInRadians = 0.5f * 0.017453292f;
constexpr std::uint32_t initialChannels = 6;
constexpr std::uint32_t initialBufferSize = 512;
// Limits of the three stages' series, ms.
constexpr float earlyLowest = 1.0f;
constexpr float earlyHighest = 120.0f;
constexpr float clusterLowest = 1.0f;
constexpr float clusterHighest = 300.0f;
constexpr float lateOnsetHighest = 500.0f;
constexpr float lowestDistribution = 0.1f;
constexpr float highestDistribution = 0.9f;
constexpr float lowestDensity = 0.2f;
constexpr float highestDensity = 4.0f;

// Numbers from outside are made usable before anything stores them: a NaN leaves the
// parameter (or coordinate) as it was, and values too large to compute with, infinities
// included, are held to the limits below. Everything else meets the usual clamps at the point
// of use. So no setter can put a non-finite value into a ramp, a filter or a delay.
constexpr float largestFloat = 3.4028235e38f;
constexpr float lowestLevelDb = -200.0f;
constexpr float highestLevelDb = 60.0f;
constexpr float highestBandDb = 60.0f;
constexpr float widestEarlyDegrees = 360.0f;
/// Beyond 100 m a source only changes its direction, which survives the hold.
constexpr float farthestPosition = 1000.0f;

float usable(float asked, float present, float lowest = -largestFloat, float highest = largestFloat)
{
    return ondo::NonFinite::held(asked, lowest, highest, present);
}

ondo::HLShelfParameters usableShelf(const ondo::HLShelfParameters& asked, const ondo::HLShelfParameters& present)
{
    return {usable(asked.G0, present.G0, lowestLevelDb, highestLevelDb),
            usable(asked.Gl, present.Gl, -highestBandDb, highestBandDb),
            usable(asked.Gm, present.Gm, -highestBandDb, highestBandDb),
            usable(asked.Gh, present.Gh, -highestBandDb, highestBandDb),
            usable(asked.fl, present.fl),
            usable(asked.fh, present.fh)};
}

/// A shelf with its overall gain taken out: that gain rides on the section's ramp instead.
ondo::HLShelfParameters withoutGain(ondo::HLShelfParameters parameters)
{
    parameters.G0 = 0.0f;
    return parameters;
}
} // namespace

TarvoVerb::TarvoVerb(std::uint32_t numInternals)
    : AudioProcessorWithOscInAudioInterrupt(initialChannels, initialChannels), numInternals(numInternals),
      early(numInternals, 1), cluster(numInternals), reverb(numInternals), directFilter(initialChannels),
      roomFilter(1), earlyFilter(2), clusterFilter(numInternals), directBuffer(initialChannels, initialBufferSize),
      roomBuffer(1, initialBufferSize), earlyPairBuffer(2, initialBufferSize),
      lateBuffer(numInternals, initialBufferSize), earlyBuffer(numInternals, initialBufferSize),
      clusterBuffer(numInternals, initialBufferSize), reverbBuffer(numInternals, initialBufferSize),
      delgenEarly(numInternals, 20.0f, 40.0f, 0.5f), delgenCluster(numInternals, 20.0f, 40.0f, 0.5f),
      delgenReverb(numInternals, 20.0f, 40.0f, 0.5f), earlyGains(numInternals)
{
    for (auto& gain : earlyGains)
        gain = 1.0f;
    // The early lines hold the longest reflection the room allows from the start: a line
    // enlarged later would be reallocated under the audio thread's feet.
    const ondo::Vector<float> initialDelays = early.getDelays();
    early.setDelays(ondo::Vector<float>(numInternals, earlyHighest), true);
    early.setDelays(initialDelays, true);
    reverb.setAirEnabled(true);
    for (ondo::MixTerms& side : earlyFoldTerms)
        side.reserve((numInternals + 1) / 2);
}

Pan::Type TarvoVerb::panningTypeFor(std::uint32_t numSpeakers)
{
    return numSpeakers <= 2 ? Pan::Angular : Pan::Vbap2D;
}

bool TarvoVerb::isConfigurationValid(std::uint32_t numSources, std::uint32_t numSpeakers, std::uint32_t numInternals)
{
    if (numSources == 0 || numSources > maximumSources || numSpeakers == 0 || numSpeakers > maximumSpeakers)
        return false;
    if (numInternals < minimumInternals || numInternals > maximumInternals)
        return false;
    return Pan::isConfigurationValid(panningTypeFor(numSpeakers), numSpeakers);
}

void TarvoVerb::configure(float rate, std::uint32_t size, std::uint32_t numSources, std::uint32_t numSpeakers)
{
    if (configured)
    {
        // Channel counts never change once configured.
        setup(rate, size, true);
        return;
    }
    sourcePositions.resize(numSources);
    speakerPositions.resize(numSpeakers);
    sourceDirectGain.assign(numSources, ondo::Ramp());
    sourceRoomGain.assign(numSources, ondo::Ramp());
    earlyGains = std::vector<ondo::RelaxedAtomic<float>>(numInternals, 1.0f);
    roomSendGains.resize(numSources);
    directGains.resize(numSources);
    // Room for every term the three panners can bring to one speaker.
    outputTerms.assign(numSpeakers, ondo::MixTerms());
    for (ondo::MixTerms& terms : outputTerms)
        terms.reserve(numSources + 2 + numInternals);
    termsKept = false;

    const Pan::Type type = panningTypeFor(numSpeakers);
    panDirect = Pan::create(numSources, numSpeakers, type, Pan::Direct);
    panEarly = Pan::create(2, numSpeakers, type, Pan::Early);
    panLate = Pan::create(numInternals, numSpeakers, type, Pan::Diffuse);
    if (!panDirect || !panEarly || !panLate)
    {
        panDirect.reset();
        panEarly.reset();
        panLate.reset();
        configured = false;
        return;
    }

    speakerPositions = ondo::Point3Array::defaultLayout(numSpeakers);
    panDirect->setSpeakers(speakerPositions);
    panEarly->setSpeakers(speakerPositions);

    directBuffer.setSize(numSources, directBuffer.getNumSamples());
    directFilter.setNumChannels(numSources);
    roomFilter.setNumChannels(1);
    earlyFilter.setNumChannels(2);
    clusterFilter.setNumChannels(numInternals);

    computeEarlyGainsNow();
    configured = true;
    setNumberOfInputs(numSources);
    setNumberOfOutputs(numSpeakers);
    // The block views know their channel counts from the start, so the first block allocates nothing.
    inputsReference.setSize(numSources, 0);
    outputsReference.setSize(numSpeakers, 0);

    const ondo::Point3Array layout = ondo::Point3Array::defaultLayout(numSources);
    for (std::uint32_t i = 0; i < numSources; ++i)
        setSourcePosition(i, layout[i]);
    setup(rate, size, true);
}

std::string TarvoVerb::getInletName(std::int32_t index) const
{
    return numberedInletName("source #", index);
}

std::string TarvoVerb::getOutletName(std::int32_t index) const
{
    return numberedOutletName("speaker #", index);
}

void TarvoVerb::setSampleRate(float rate)
{
    const float clamped = clampSampleRate(rate);
    for (std::size_t i = 0; i < sourceDirectGain.size(); ++i)
    {
        sourceRoomGain[i].setSampleRate(clamped);
        sourceDirectGain[i].setSampleRate(clamped);
    }
    for (ondo::Ramp* ramp : {&directGain, &earlyGain, &clusterGain, &reverbGain})
        ramp->setSampleRate(clamped);
    for (ondo::AudioProcessorBase* stage : {static_cast<ondo::AudioProcessorBase*>(&early),
                                            static_cast<ondo::AudioProcessorBase*>(&cluster),
                                            static_cast<ondo::AudioProcessorBase*>(&reverb),
                                            static_cast<ondo::AudioProcessorBase*>(&directFilter),
                                            static_cast<ondo::AudioProcessorBase*>(&earlyFilter),
                                            static_cast<ondo::AudioProcessorBase*>(&clusterFilter),
                                            static_cast<ondo::AudioProcessorBase*>(&roomFilter)})
        stage->changeSampleRate(clamped);
    for (Pan* pan : {panDirect.get(), panEarly.get(), panLate.get()})
        if (pan != nullptr)
            pan->changeSampleRate(clamped);
}

void TarvoVerb::setBufferSize(std::uint32_t size)
{
    // The kept terms read the buffers about to be reallocated.
    forgetKeptTerms();
    for (ondo::AudioProcessorBase* stage : {static_cast<ondo::AudioProcessorBase*>(&directFilter),
                                            static_cast<ondo::AudioProcessorBase*>(&roomFilter),
                                            static_cast<ondo::AudioProcessorBase*>(&earlyFilter),
                                            static_cast<ondo::AudioProcessorBase*>(&clusterFilter),
                                            static_cast<ondo::AudioProcessorBase*>(&early),
                                            static_cast<ondo::AudioProcessorBase*>(&cluster),
                                            static_cast<ondo::AudioProcessorBase*>(&reverb)})
        stage->changeBufferSize(size);
    for (Pan* pan : {panDirect.get(), panEarly.get(), panLate.get()})
        if (pan != nullptr)
            pan->changeBufferSize(size);
    for (ondo::AudioBuffer<float>* buffer : {&earlyBuffer, &clusterBuffer, &reverbBuffer, &directBuffer, &roomBuffer,
                                             &earlyPairBuffer, &lateBuffer})
        buffer->setSize(buffer->getNumChannels(), size);
}

void TarvoVerb::clear()
{
    early.clear();
    cluster.clear();
    reverb.clear();
    for (Pan* pan : {panDirect.get(), panEarly.get(), panLate.get()})
        if (pan != nullptr)
            pan->clear();
    directFilter.clear();
    earlyFilter.clear();
    clusterFilter.clear();
    roomFilter.clear();
}

void TarvoVerb::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    // Blocks longer than the buffers are served in pieces, so nothing is ever written past them.
    const auto capacity = static_cast<std::uint32_t>(directBuffer.getNumSamples());
    ondo::forEachPiece(inputsReference, inputs, numInputs, outputsReference, outputs, numOutputs, numSamples, capacity,
                       [this](std::uint32_t n) { renderBlock(n); });
}

void TarvoVerb::renderBlock(std::uint32_t n)
{
    const int count = static_cast<int>(n);
    const std::uint32_t S = numInputs;
    const std::uint32_t N = numInternals;
    const float s = std::sqrt(1.0f / static_cast<float>(N));
    const float r = std::sqrt(static_cast<float>(S));
    float** in = inputsReference.getChannels();
    float** direct = directBuffer.getChannels();
    float** room = roomBuffer.getChannels();
    float** reverbChannels = reverbBuffer.getChannels();
    float** pair = earlyPairBuffer.getChannels();
    float** late = lateBuffer.getChannels();

    // Each ramp's value at the head of the block serves the whole block.
    const float gD = directGain.getValue(0);
    directGain.advance(n);
    const float gE = earlyGain.getValue(0);
    earlyGain.advance(n);
    const float gC = clusterGain.getValue(0);
    clusterGain.advance(n);
    const float gR = reverbGain.getValue(0);
    reverbGain.advance(n);

    // Sources through their shelves, then into the mono room bus at their distance gains,
    // and to the direct sound at theirs, while the inputs are sure to be intact (a host may
    // hand the same buffers as inputs and outputs). A flat shelf leaves the sources as they
    // are: the pass then reads the inputs themselves and cleans them on the way; past a shelf
    // they are cleaned before it.
    const bool directFlat = directFilter.beginBlock();
    std::uint64_t nonFinite = 0;
    if (directFlat)
        directFilter.passBlock();
    else
    {
        for (std::uint32_t i = 0; i < S; ++i)
            nonFinite += ondo::NonFinite::zeroSamples(in[i], n);
        directFilter.process(direct, in, n);
    }
    for (std::uint32_t i = 0; i < S; ++i)
    {
        roomSendGains[i] = sourceRoomGain[i].getValue(0);
        sourceRoomGain[i].advance(n);
        directGains[i] = sourceDirectGain[i].getValue(0) * gD * r * s;
        sourceDirectGain[i].advance(n);
    }
    nonFinite += runSourceSends({directFlat ? in : direct, roomSendGains.data(), directGains.data(), room[0], direct},
                                S, n);
    if (nonFinite > 0)
        nonFiniteInputCount = nonFiniteInputCount + nonFinite;
    filterInPlace(roomFilter, room, n);

    // The room chain, in series: each stage feeds the next. The early and cluster stages
    // leave their output in their own lines where they can, and the rest reads it there.
    float* const* earlyChannels = early.processInPlace(earlyBuffer.getChannels(), room, n);
    float* const* clusterChannels =
        cluster.processInPlace(clusterBuffer.getChannels(), const_cast<float**>(earlyChannels), n);
    // The cluster through its shelf, joined by the late reverberation unfiltered. Past a
    // flat shelf both join in the reverberator's own pass, with the same sums, and the late
    // reverberation alone is not kept.
    const float clusterFactor = gC * s;
    const float reverbFactor = gR * s;
    const bool clusterFlat = clusterFilter.beginBlock();
    if (clusterFlat)
    {
        clusterFilter.passBlock();
        reverb.processWithSums(nullptr, const_cast<float**>(clusterChannels), late, clusterFactor, reverbFactor, n);
    }
    else
        reverb.process(reverbChannels, const_cast<float**>(clusterChannels), n);

    // The three panners add into the outputs in turn. Those whose gains stand still hand
    // over their terms instead, and each output is then written in one pass with the same
    // sums: see mixIntoOutputs. Terms that stand as they were last block, over the same
    // buffers, are kept: the panners then only take the block.
    const bool repeat = keptTermsHold();
    if (!repeat)
        forgetKeptTerms();
    outputsWritten = false;
    allGathered = true;
    if (repeat)
        panDirect->repeatTerms(n);
    else
        mixIntoOutputs(*panDirect, direct, n);

    // Early reflections: gained after the chain has taken them, folded to a pair. Each
    // line's gain and the fold's factor make one product, so the pair is built in one pass.
    const float earlyFold = gE * s;
    for (std::uint32_t i = 0; i < N; ++i)
        earlyFoldTerms[i % 2].add(earlyChannels[i], earlyGains[i] * earlyFold);
    ondo::MixTerms::writeEach(earlyFoldTerms.data(), pair, 2, n, false);
    filterInPlace(earlyFilter, pair, n);
    if (repeat)
        panEarly->repeatTerms(n);
    else
        mixIntoOutputs(*panEarly, pair, n);

    if (!clusterFlat)
    {
        for (std::uint32_t c = 0; c < N; ++c)
            vectorMultiplyConstant32(clusterChannels[c], clusterFactor, late[c], count);
        clusterFilter.process(late, late, n);
        for (std::uint32_t c = 0; c < N; ++c)
            vectorAddProductConstant32(reverbChannels[c], reverbFactor, late[c], count);
    }
    if (repeat)
        panLate->repeatTerms(n);
    else
        mixIntoOutputs(*panLate, late, n);
    flushOutputTerms(n, allGathered);
    termsKept = allGathered;
}

void TarvoVerb::filterInPlace(ondo::MultiFadedHLShelf& shelf, float** channels, std::uint32_t n)
{
    // A flat shelf's block leaves the samples as they are: only its stages move on.
    if (shelf.beginBlock())
        shelf.passBlock();
    else
        shelf.process(channels, channels, n);
}

void TarvoVerb::mixIntoOutputs(Pan& pan, float** panned, std::uint32_t n)
{
    if (pan.gatherTerms(outputTerms.data(), panned, n))
        return;
    allGathered = false;
    flushOutputTerms(n);
    pan.processAdd(outputsReference.getChannels(), panned, n);
}

void TarvoVerb::flushOutputTerms(std::uint32_t n, bool keep)
{
    // The first flush writes the outputs, as if they had been zeroed and then added to.
    float** out = outputsReference.getChannels();
    if (outputsWritten)
        for (std::uint32_t k = 0; k < numOutputs; ++k)
            outputTerms[k].addInto(out[k], n);
    else
        ondo::MixTerms::writeEach(outputTerms.data(), out, numOutputs, n, keep);
    outputsWritten = true;
}

bool TarvoVerb::keptTermsHold() const
{
    return termsKept && panDirect->termsUnchanged() && panEarly->termsUnchanged() && panLate->termsUnchanged();
}

void TarvoVerb::forgetKeptTerms()
{
    if (termsKept)
        for (ondo::MixTerms& terms : outputTerms)
            terms.forget();
    termsKept = false;
}

void TarvoVerb::setSourcePosition(std::uint32_t index, const ondo::Point3& asked)
{
    if (index >= sourcePositions.size())
        return;
    const ondo::Point3 p = ondo::NonFinite::heldPosition(asked, sourcePositions[index], farthestPosition);
    sourcePositions[index] = p;
    if (panDirect)
        panDirect->setSourcePosition(index, p, false);
    if (panEarly)
    {
        // The two early virtual sources turn about the vertical axis, either side of the source.
        const float theta = parameters.earlyWidth * halfDegreeInRadians;
        if (theta == 0.0f)
        {
            panEarly->setSourcePosition(0, p, false);
            panEarly->setSourcePosition(1, p, false);
        }
        else
        {
            const float c = std::cos(theta);
            const float sn = std::sin(theta);
            panEarly->setSourcePosition(0, ondo::Point3(p.x * c - p.y * sn, p.y * c + p.x * sn, p.z), false);
            panEarly->setSourcePosition(1, ondo::Point3(p.x * c + p.y * sn, p.y * c - p.x * sn, p.z), false);
        }
    }
    // The direct path falls with the square of the distance, the send to the room with the
    // distance itself: the room doesn't fall as fast as the direct sound.
    const float d = std::clamp(p.length(), nearestDistance, farthestDistance);
    sourceDirectGain[index].setTarget(1.0f / (d * d), static_cast<double>(distanceGainGlideMs));
    sourceRoomGain[index].setTarget(1.0f / d, static_cast<double>(distanceGainGlideMs));
}

void TarvoVerb::setSpeakerPositions(const ondo::Point3Array& asked)
{
    ondo::Point3Array positions = asked;
    for (std::size_t k = 0; k < positions.size(); ++k)
        positions[k] = ondo::NonFinite::heldPosition(
            asked[k], k < speakerPositions.size() ? speakerPositions[k] : ondo::Point3(), farthestPosition);
    speakerPositions = positions;
    if (panDirect)
        panDirect->setSpeakers(positions);
    if (panEarly)
        panEarly->setSpeakers(positions);
}

float TarvoVerb::dbToGain(float dB)
{
    return std::sqrt(std::pow(10.0f, 0.1f * dB));
}

void TarvoVerb::setDirectFilter(const ondo::HLShelfParameters& asked)
{
    const ondo::HLShelfParameters p = usableShelf(asked, parameters.directFilterParams);
    parameters.directFilterParams = p;
    directGain.setTarget(dbToGain(p.G0), static_cast<double>(sectionGainGlideMs));
    directFilter.setParameters(withoutGain(p), false);
}

void TarvoVerb::setRoomFilter(const ondo::HLShelfParameters& asked)
{
    const ondo::HLShelfParameters p = usableShelf(asked, parameters.roomFilterParams);
    parameters.roomFilterParams = p;
    roomFilter.setParameters(p, false);
}

void TarvoVerb::setEarlyFilter(const ondo::HLShelfParameters& asked)
{
    const ondo::HLShelfParameters p = usableShelf(asked, parameters.earlyFilterParams);
    parameters.earlyFilterParams = p;
    earlyGain.setTarget(dbToGain(p.G0), static_cast<double>(sectionGainGlideMs));
    earlyFilter.setParameters(withoutGain(p), false);
}

void TarvoVerb::setClusterFilter(const ondo::HLShelfParameters& asked)
{
    const ondo::HLShelfParameters p = usableShelf(asked, parameters.clusterFilterParams);
    parameters.clusterFilterParams = p;
    clusterGain.setTarget(dbToGain(p.G0), static_cast<double>(sectionGainGlideMs));
    clusterFilter.setParameters(withoutGain(p), false);
}

void TarvoVerb::setEarlyMin(float ms)
{
    parameters.earlyMin = usable(ms, parameters.earlyMin);
    updateEarly();
    updateCluster();
}

void TarvoVerb::setEarlyMax(float ms)
{
    parameters.earlyMax = usable(ms, parameters.earlyMax);
    updateEarly();
    updateCluster();
}

void TarvoVerb::setEarlyDistribution(float distribution)
{
    parameters.earlyDistribution = usable(distribution, parameters.earlyDistribution);
    updateEarly();
    updateCluster();
}

void TarvoVerb::setEarlyWidth(float degrees)
{
    parameters.earlyWidth = usable(degrees, parameters.earlyWidth, -widestEarlyDegrees, widestEarlyDegrees);
    for (std::uint32_t i = 0; i < sourcePositions.size(); ++i)
        setSourcePosition(i, sourcePositions[i]);
}

void TarvoVerb::setEarlyShape(float shape)
{
    parameters.earlyShape = usable(shape, parameters.earlyShape);
    computeEarlyGainsNow();
}

void TarvoVerb::setClusterMin(float ms)
{
    parameters.clusterMin = usable(ms, parameters.clusterMin);
    updateCluster();
    updateLateDelays();
}

void TarvoVerb::setClusterMax(float ms)
{
    parameters.clusterMax = usable(ms, parameters.clusterMax);
    updateCluster();
    updateLateDelays();
}

void TarvoVerb::setClusterDistribution(float distribution)
{
    parameters.clusterDistribution = usable(distribution, parameters.clusterDistribution);
    updateCluster();
    updateLateDelays();
}

void TarvoVerb::setReverbMin(float ms)
{
    parameters.reverbMin = usable(ms, parameters.reverbMin);
    updateLateDelays();
}

void TarvoVerb::setReverbDensity(float seconds)
{
    parameters.reverbDensity = usable(seconds, parameters.reverbDensity);
    updateLateDelays();
}

void TarvoVerb::setReverbGain(float dB)
{
    parameters.reverbGainDb = usable(dB, parameters.reverbGainDb, lowestLevelDb, highestLevelDb);
    reverbGain.setTarget(dbToGain(parameters.reverbGainDb), static_cast<double>(sectionGainGlideMs));
}

void TarvoVerb::setReverbTimes(const ondo::HLShelfParameters& decay, float dB)
{
    setReverbGain(dB);
    parameters.tr0 = usable(decay.G0, parameters.tr0);
    parameters.trl = usable(decay.Gl, parameters.trl);
    parameters.trm = usable(decay.Gm, parameters.trm);
    parameters.trh = usable(decay.Gh, parameters.trh);
    parameters.fl = usable(decay.fl, parameters.fl);
    parameters.fh = usable(decay.fh, parameters.fh);
    reverb.setTr0(parameters.tr0, false);
    reverb.setTrl(parameters.trl, false);
    reverb.setTrm(parameters.trm, false);
    reverb.setTrh(parameters.trh, false);
    reverb.setFl(parameters.fl, false);
    reverb.setFh(parameters.fh, false);
}

void TarvoVerb::setAirEnabled(bool enabled)
{
    parameters.airEnabled = enabled;
    reverb.setAirEnabled(enabled);
}

void TarvoVerb::setAirCutoff(float hertz)
{
    // Not stored here: a NaN is simply not handed on.
    if (std::isnan(hertz))
        return;
    reverb.setAirCutoff(hertz);
}

void TarvoVerb::setInfinite(bool enabled)
{
    reverb.setInfinite(enabled);
}

void TarvoVerb::computeEarlyGainsNow()
{
    ondo::Vector<float> gains;
    computeEarlyGains(gains, numInternals, parameters.earlyShape, early.getDelaySpread(), true);
    for (std::uint32_t j = 0; j < numInternals && j < gains.size(); ++j)
        earlyGains[j] = gains[j];
}

void TarvoVerb::updateEarly()
{
    float a = std::clamp(parameters.earlyMin, earlyLowest, earlyHighest);
    float b = std::min(std::max(parameters.earlyMax, a), earlyHighest);
    if (b < a)
        std::swap(a, b);
    const float d = std::clamp(parameters.earlyDistribution, lowestDistribution, highestDistribution);
    early.setDelays(delgenEarly.setMinMax(a, b, d), false);
    computeEarlyGainsNow();
}

void TarvoVerb::updateCluster()
{
    // Stages in series count their delays from the stage before: the cluster's are differences.
    float a = std::clamp(parameters.clusterMin - parameters.earlyMin, clusterLowest, clusterHighest);
    float b = std::min(std::max(parameters.clusterMax - parameters.earlyMax, a), clusterHighest);
    if (a > b)
        std::swap(a, b);
    const float d = std::clamp(parameters.clusterDistribution, lowestDistribution, highestDistribution);
    cluster.setDelays(delgenCluster.setMinMax(a, b, d), false);
}

void TarvoVerb::updateLateDelays()
{
    const float a = std::clamp(parameters.reverbMin - parameters.clusterMin, 0.0f, lateOnsetHighest);
    const float density = std::clamp(parameters.reverbDensity, lowestDensity, highestDensity);
    const float distribution = numInternals < 9 ? 0.5f : 0.3f;
    reverb.setDelayRange(a, density * 1000.0f, distribution, false);
}

namespace
{
/// `message` lies at or below `prefix`: unlike `startsWith`, a shorter address never does.
bool isAtOrBelow(const ondo::OSCMessage& message, std::string_view prefix)
{
    const auto depth = static_cast<std::size_t>(std::count(prefix.begin(), prefix.end(), '/'));
    return message.size() >= depth && message.startsWith(prefix);
}

struct FilterRoute
{
    std::string_view address;
    ondo::HLShelfParameters TarvoVerb::ParametersRecord::*record;
    void (TarvoVerb::*set)(const ondo::HLShelfParameters&);
};
constexpr FilterRoute filterRoutes[] = {
    {"/direct/filter", &TarvoVerb::ParametersRecord::directFilterParams, &TarvoVerb::setDirectFilter},
    {"/room/filter", &TarvoVerb::ParametersRecord::roomFilterParams, &TarvoVerb::setRoomFilter},
    {"/early/filter", &TarvoVerb::ParametersRecord::earlyFilterParams, &TarvoVerb::setEarlyFilter},
    {"/cluster/filter", &TarvoVerb::ParametersRecord::clusterFilterParams, &TarvoVerb::setClusterFilter},
};

struct NumberRoute
{
    std::string_view address;
    void (TarvoVerb::*set)(float);
};
constexpr NumberRoute numberRoutes[] = {
    {"/reverb/gain", &TarvoVerb::setReverbGain},
    {"/reverb/air/cutoff", &TarvoVerb::setAirCutoff},
    {"/early/min", &TarvoVerb::setEarlyMin},
    {"/early/max", &TarvoVerb::setEarlyMax},
    {"/early/distr", &TarvoVerb::setEarlyDistribution},
    {"/cluster/min", &TarvoVerb::setClusterMin},
    {"/cluster/max", &TarvoVerb::setClusterMax},
    {"/cluster/distr", &TarvoVerb::setClusterDistribution},
    {"/reverb/min", &TarvoVerb::setReverbMin},
    {"/reverb/density", &TarvoVerb::setReverbDensity},
};

/// The decay fields travel to the late stage together, in the shelf record's six slots.
struct DecayRoute
{
    std::string_view address;
    float ondo::HLShelfParameters::*field;
};
constexpr DecayRoute decayRoutes[] = {
    {"/reverb/tr0", &ondo::HLShelfParameters::G0}, {"/reverb/trl", &ondo::HLShelfParameters::Gl},
    {"/reverb/trm", &ondo::HLShelfParameters::Gm}, {"/reverb/trh", &ondo::HLShelfParameters::Gh},
    {"/reverb/fl", &ondo::HLShelfParameters::fl},  {"/reverb/fh", &ondo::HLShelfParameters::fh},
};

/// Taken as understood and left alone: the viewer's addresses, anything else below a
/// filter, and the room size, which only the host's viewer uses.
constexpr std::string_view silentPrefixes[] = {"/viewer",       "/direct/filter",  "/room/filter",
                                               "/early/filter", "/cluster/filter", "/reverb/room/size"};
} // namespace

bool TarvoVerb::processOscMessage(const ondo::OSCMessage& message, std::int32_t& context)
{
    if (handleProcessorMessages(message, context))
        return true;
    for (const FilterRoute& route : filterRoutes)
        if (message.size() >= 3 && message.part(2) == "params" && isAtOrBelow(message, route.address))
        {
            ondo::HLShelfParameters record = parameters.*(route.record);
            bool changed = false;
            if (ondo::processHLShelfParametersMessage(message.withoutFirstParts(2), record, changed))
            {
                if (changed)
                    (this->*(route.set))(record);
                return true;
            }
        }
    for (const NumberRoute& route : numberRoutes)
        if (message.matches(route.address) && message.matchesSingle('n'))
        {
            (this->*(route.set))(message.getFloat(0));
            return true;
        }
    for (const DecayRoute& route : decayRoutes)
        if (message.matches(route.address) && message.matchesSingle('n'))
        {
            ondo::HLShelfParameters decay{parameters.tr0, parameters.trl, parameters.trm,
                                          parameters.trh, parameters.fl,  parameters.fh};
            decay.*(route.field) = message.getFloat(0);
            setReverbTimes(decay, parameters.reverbGainDb);
            return true;
        }
    if ((message.matches("/reverb/air/enable") || message.matches("/reverb/air")) && message.matchesSingle('b'))
    {
        setAirEnabled(message.getBool(0));
        return true;
    }
    if (message.matches("/reverb/infinite") && message.matchesSingle('b'))
    {
        setInfinite(message.getBool(0));
        return true;
    }
    return std::any_of(std::begin(silentPrefixes), std::end(silentPrefixes),
                       [&](std::string_view prefix) { return isAtOrBelow(message, prefix); });
}

ondo::OSCBundle TarvoVerb::getState() const
{
    ondo::OSCBundle state = getProcessorState();
    for (const FilterRoute& route : filterRoutes)
        ondo::addHLShelfParametersState(state, route.address, parameters.*(route.record));
    state.add("/source/number", static_cast<std::uint32_t>(sourcePositions.size()));
    state.add("/speaker/number", static_cast<std::uint32_t>(speakerPositions.size()));
    state.add("/numinternals", numInternals);
    const std::pair<const char*, float> values[] = {
        {"/early/min", parameters.earlyMin},       {"/early/max", parameters.earlyMax},
        {"/early/distr", parameters.earlyDistribution}, {"/early/width", parameters.earlyWidth},
        {"/early/shape", parameters.earlyShape},   {"/cluster/min", parameters.clusterMin},
        {"/cluster/max", parameters.clusterMax},   {"/cluster/distr", parameters.clusterDistribution},
        {"/reverb/gain", parameters.reverbGainDb}, {"/reverb/tr0", parameters.tr0},
        {"/reverb/trl", parameters.trl},           {"/reverb/trm", parameters.trm},
        {"/reverb/trh", parameters.trh},           {"/reverb/fl", parameters.fl},
        {"/reverb/fh", parameters.fh},             {"/reverb/min", parameters.reverbMin},
        {"/reverb/density", parameters.reverbDensity},
    };
    for (const auto& [address, value] : values)
        state.add(address, value);
    state.add("/reverb/air/enable", parameters.airEnabled);
    state.add("/reverb/air/cutoff", reverb.getAirCutoff());
    return state;
}

ondo::OscDocumentation TarvoVerb::getDocumentation() const
{
    ondo::OscDocumentation documentation;
    for (const FilterRoute& route : filterRoutes)
        documentation.add({std::string(route.address) + "/params", "[G0 Gl Gm Gh fl fh]",
                           "sets the section's shelf: gains (in dB) and crossovers (in Hz)"});
    documentation.add({"/reverb/gain", "[number]", "sets the late reverberation level (in dB)"});
    documentation.add({"/reverb/tr0", "[number]", "sets the reverberation time (in s)"});
    documentation.add({"/reverb/trl", "[number]", "sets the low-frequency decay ratio"});
    documentation.add({"/reverb/trm", "[number]", "sets the mid-frequency decay ratio"});
    documentation.add({"/reverb/trh", "[number]", "sets the high-frequency decay ratio"});
    documentation.add({"/reverb/fl", "[number]", "sets the low crossover of the decay (in Hz)"});
    documentation.add({"/reverb/fh", "[number]", "sets the high crossover of the decay (in Hz)"});
    documentation.add({"/reverb/air/enable", "[boolean]", "enables the air absorption"});
    documentation.add({"/reverb/air/cutoff", "[number]", "sets the air absorption cutoff (in Hz)"});
    documentation.add({"/reverb/infinite", "[boolean]", "freezes the decay"});
    documentation.add({"/early/min", "[number]", "sets the first reflection's delay (in ms)"});
    documentation.add({"/early/max", "[number]", "sets the last reflection's delay (in ms)"});
    documentation.add({"/early/distr", "[number]", "sets the distribution of the reflections"});
    documentation.add({"/cluster/min", "[number]", "sets the cluster's shortest delay (in ms)"});
    documentation.add({"/cluster/max", "[number]", "sets the cluster's longest delay (in ms)"});
    documentation.add({"/cluster/distr", "[number]", "sets the distribution of the cluster's delays"});
    documentation.add({"/reverb/min", "[number]", "sets the shortest late delay (in ms)"});
    documentation.add({"/reverb/density", "[number]", "sets the sum of the late delays (in s)"});
    return documentation;
}
} // namespace Quor
