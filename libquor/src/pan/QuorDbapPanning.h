#pragma once

#include "pan/QuorAmplitudePanning.h"

namespace Quor
{
/// Distance-based amplitude panning: every speaker sounds, with a gain that falls as the
/// inverse of its distance from the source, and the gains keep unit power. Speakers may
/// stand anywhere. A blur pulls every distance towards the distance of the source from the
/// centre of the setup, which widens the image up to equal gains on all speakers; the
/// blur by direction instead shrinks the distances along each axis on its own.
///
/// Threads: all setters are control thread and recompute every source without
/// allocating; the audio thread only runs the matrix.
class DbapPanning : public AmplitudePanning
{
public:
    enum SpreadMode : DbapSpreadMode
    {
        SingleBlur = 0,     ///< one blur per source, towards the centre
        BlurByDirection = 1 ///< three blurs per source, one per axis
    };

    /// Blur of one source along x, y and z, each in [0, 1].
    struct SpreadByDirection
    {
        float x = 0.0f;
        float y = 0.0f;
        float z = 0.0f;
    };

    DbapPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Any other value than `BlurByDirection` uses the single blur.
    void setDbapSpreadMode(DbapSpreadMode mode) override;
    /// Blur in percent, clamped to [0, 100]; 100 gives equal gains on all speakers.
    void setSourceSpread(std::uint32_t source, float percent) override;
    void setAllSourcesSpread(float percent) override;
    /// Blur per axis in percent, each clamped to [0, 100].
    void setSourceSpreadByDirection(std::uint32_t source, float x, float y, float z) override;
    void setAllSourcesSpreadByDirection(float x, float y, float z) override;
    /// Silences a source outside the setup instead of softening it.
    void setMuteOutside(bool mute);

    DbapSpreadMode getDbapSpreadMode() const { return spreadMode; }
    /// Blur of a source as a fraction in [0, 1].
    float getSourceBlur(std::uint32_t source) const { return sourcesBlur[source]; }
    SpreadByDirection getSourceBlurByDirection(std::uint32_t source) const { return sourcesBlurByDirection[source]; }
    bool getMuteOutside() const { return muteOutside; }
    ondo::Point3 getCenter() const { return center; }

    /// Recomputes every source after a change that touches them all.
    virtual void updateAllSources() = 0;

protected:
    /// The squared distance of blur by direction: each axis shrunk by one minus its blur.
    float squaredDistanceByDirection(std::uint32_t source, const ondo::Point3& s, const ondo::Point3& p) const;
    /// Turns the squared distances in `row` into gains of unit power, each the inverse of
    /// its distance; the 1e-10 keeps a source on a speaker finite (that speaker near 1).
    void gainsFromSquaredDistances(float* row) const;
    /// Zeroes the row, or scales it by `factor`.
    void silenceOrScale(float* row, bool silence, float factor) const;

    ondo::Point3 center;
    DbapSpreadMode spreadMode = SingleBlur;
    ondo::Vector<float> sourcesBlur;
    ondo::Vector<SpreadByDirection> sourcesBlurByDirection;
    bool muteOutside = false;
};
} // namespace Quor
