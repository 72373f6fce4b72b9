#pragma once

#include "pan/QuorAmplitudePanning.h"

namespace Quor
{
/// Speaker-placement correction amplitude panning on the azimuth circle: every speaker
/// takes a raised-cosine share of the source's direction, divided by how crowded its own
/// direction is with other speakers, so that a dense side of an irregular ring does not
/// pull the image. Gains at unit power; elevation and distance play no role.
class SPCAmplitudePanning : public AmplitudePanning
{
public:
    /// Installs the default layout. Control thread; allocates.
    SPCAmplitudePanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Control thread; allocates only to copy the positions. Raises `ondo::Exception`
    /// unless there is one position per speaker.
    void setSpeakers(const ondo::Point3Array& speakers) override;
    /// Control thread; real-time safe.
    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    bool is2D() const override { return true; }

    /// The crowding weight of a speaker: half the sum of 1 + cos of its angle to every
    /// speaker, itself included.
    float getSpeakerWeight(std::uint32_t speaker) const { return speakerWeights[speaker]; }

private:
    ondo::Vector<float> speakerAngles;
    ondo::Vector<float> speakerWeights;
    /// Compactness in percent; 0 keeps the plain raised cosine.
    ondo::Vector<float> sourcesCompactness;
};
} // namespace Quor
