#pragma once

#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspMixTerms.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "pan/QuorPanOSCReceiver.h"
#include "hrtf/QuorHrtfData.h"
#include "math/TarvoDspAmbisonics.h"
#include "math/TarvoDspPoint3Array.h"
#include "math/TarvoDspRotation.h"
#include "pan/QuorHoaEncodingVector.h"
#include "text/TarvoDspString.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace Quor
{
using StringArray = std::vector<ondo::String>;

/// The base of every panner: N source inputs, M speaker outputs, and where they are.
/// Panners are made by `create`, which never fails: a request it cannot serve gives a
/// `NullPanning`. The channel counts are fixed for the life of the object.
///
/// Threads: positions, speakers and settings are changed by one control thread at a time;
/// the audio thread runs `process` and `processAdd`, which allocate nothing.
class Pan : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    enum Type : std::int32_t
    {
        Binaural = 0,
        StereoXY,
        StereoMS,
        StereoAB,
        StereoPan,
        Surround,
        Recursive,
        Angular,
        Vbap2D,
        Vbip2D,
        Vbap3D,
        Vbip3D,
        Dbap2D,
        Dbap3D,
        BFormat,
        Hoa2D,
        Hoa3D,
        VDbap,
        NfcHoa2D,
        NfcHoa3D,
        Spcap,
        Knn,
        Subwoofers,
        Aep2D,
        Aep3D,
        Null
    };

    enum SubType : std::int32_t
    {
        Direct = 0,
        Early,
        Diffuse,
        Nearfield,
        SphericalHeadModel,
        SnowmanModel,
        Continuous
    };

    // Vocabularies owned by the families that use them (delay lines, Dbap, Ambisonics,
    // binaural, crossfading filters); those not yet built are carried as integers.
    using InterpolationMode = std::int32_t;
    using DbapSpreadMode = std::int32_t;
    using AmbisonicNormalization = ondo::Ambisonics::Normalization;
    using ComputationMode = HoaEncodingVector::Mode;
    using ItdType = std::int32_t;
    using ItdLatencyMode = std::int32_t;
    using CrossfadeType = std::int32_t;

    Pan(std::uint32_t numSources, std::uint32_t numSpeakers);
    ~Pan() override = default;

    /// The panner of `type` and `subType`, or a `NullPanning` when the counts don't fit the
    /// type or the panner can't be built. Control thread; allocates.
    static std::unique_ptr<Pan> create(std::uint32_t numSources, std::uint32_t numSpeakers, Type type,
                                       SubType subType);
    /// Whether `type` can serve `numSpeakers`, answered without building anything.
    static bool isConfigurationValid(std::int32_t type, std::uint32_t numSpeakers);

    /// The first name of a type, "null" for `Null` and beyond. Names of a string: exact
    /// case; an unknown name gives `Null`.
    static ondo::String typeToString(std::int32_t type);
    static Type stringToType(const ondo::String& name);
    /// Unknown names give `Direct`; values outside the table print as "null".
    static ondo::String subTypeToString(std::int32_t subType);
    static SubType stringToSubType(const ondo::String& name);

    Type getType() const { return type; }
    SubType getSubType() const { return subType; }
    ondo::String getTypeName() const { return typeToString(type); }
    ondo::String getSubTypeName() const { return subTypeToString(subType); }

    /// The first names of the ITD models and latency modes; "basic" and "fixedlatency" for
    /// values outside the tables.
    static ondo::String itdTypeToString(ItdType itdType);
    static ondo::String itdLatencyModeToString(ItdLatencyMode mode);

    /// The service and "/dsp" addresses first, then those of `oscReceiver`. Thread of the
    /// caller; allocates.
    bool receiveOscMessage(const ondo::OSCMessage& message, std::int32_t& context);
    /// The "/dsp" state, then the receiver's. Allocates.
    ondo::OSCBundle getOscState() const;
    /// Families with addresses of their own call the base first.
    bool processOscMessage(const ondo::OSCMessage& message, std::int32_t& context) override
    {
        return receiveOscMessage(message, context);
    }
    ondo::OSCBundle getState() const override { return getOscState(); }
    ondo::OscDocumentation getDocumentation() const override { return oscReceiver.getOscDocumentation(); }

    const ondo::Point3Array& getSourcesPosition() const { return sourcesPosition; }
    const ondo::Point3Array& getSpeakersPosition() const { return speakersPosition; }
    const ondo::Vector<std::int16_t>& getSourcesMute() const { return sourcesMute; }
    /// Control thread. Only the panners that run per-voice loops look at the flag.
    void setSourceMute(std::uint32_t source, bool muted);

    // The panner's own operations, in this order. Unless told otherwise: control thread;
    // may allocate; no effect in the base.

    /// Adds the panned sources into `outputs`. Audio thread; real-time safe.
    virtual void processAdd(float** outputs, float** inputs, std::uint32_t numSamples) = 0;
    /// For an owner that mixes several panners into the same outputs in one pass: a panner
    /// that is a plain gain matrix standing still through the block appends to `perOutput[o]`
    /// the terms `processAdd` would add into output `o`, in its order, takes the block as
    /// `processAdd` would, and returns true. Otherwise false, and `processAdd` must run.
    /// Audio thread; real-time safe.
    virtual bool gatherTerms(ondo::MixTerms* /*perOutput*/, float** /*inputs*/, std::uint32_t /*numSamples*/)
    {
        return false;
    }
    /// For an owner that kept the terms its last `gatherTerms` appended, for inputs that
    /// stay where they were: whether a gather now would append exactly those. Audio thread.
    virtual bool termsUnchanged() const { return false; }
    /// After `termsUnchanged`: takes the block as `gatherTerms` would, appending nothing.
    /// Audio thread; real-time safe.
    virtual void repeatTerms(std::uint32_t /*numSamples*/) {}
    virtual void setInterpolationTime(float /*ms*/) {}
    virtual float getInterpolationTime() const { return 0.0f; }
    virtual void setInterpolationMode(InterpolationMode /*mode*/) {}
    virtual InterpolationMode getInterpolationMode() const { return 0; }
    virtual void setDbapSpreadMode(DbapSpreadMode /*mode*/) {}
    /// Spread of one source in percent.
    virtual void setSourceSpread(std::uint32_t /*source*/, float /*percent*/) {}
    virtual void setAllSourcesSpread(float /*percent*/) {}
    virtual void setAllSourcesSpreadByDirection(float /*x*/, float /*y*/, float /*z*/) {}
    virtual void setSourceSpreadByDirection(std::uint32_t /*source*/, float /*x*/, float /*y*/, float /*z*/) {}
    virtual bool isAmplitudePanning() const { return false; }
    /// The default normalisation of the panner's dimension.
    virtual AmbisonicNormalization getAmbisonicNormalization() const
    {
        return ondo::Ambisonics::defaultNormalization(is2D() ? 2 : 3);
    }
    virtual void setAmbisonicNormalization(AmbisonicNormalization /*normalization*/) {}
    virtual void setNfcCompensation(bool /*enabled*/) {}
    virtual void setNfcSpeakersRadius(float /*metres*/) {}
    virtual void setComputationMode(const ondo::String& /*name*/) {}
    virtual void setComputationMode(ComputationMode /*mode*/) {}
    /// True when a set of head-related filters was loaded from `fileName`.
    virtual bool loadHrtf(const ondo::String& /*fileName*/) { return false; }
    virtual bool setHrtf(const HrtfData& /*hrtf*/) { return false; }
    virtual void setItdScaling(float /*percent*/) {}
    virtual float getItdScaling() const { return 100.0f; }
    /// The filters in use, never null: panners without filters give the shared empty set.
    virtual const HrtfData* getHrtf() const { return &HrtfData::empty(); }
    virtual void setHeadRadius(float /*metres*/) {}
    virtual void setSnowmanTorsoRadius(float /*metres*/) {}
    virtual void setSnowmanNeckHeight(float /*metres*/) {}
    /// Converts the name and calls the setter by value.
    virtual void setItdType(const ondo::String& name);
    virtual void setItdType(ItdType /*type*/) {}
    virtual ItdType getItdType() const { return 0; }
    virtual void setListenerPosition(const ondo::Point3& /*position*/) {}
    virtual ondo::Point3 getListenerPosition() const { return ondo::Point3::origin(); }
    virtual void setListenerOrientation(const ondo::Rotation& /*orientation*/) {}
    virtual ondo::Rotation getListenerOrientation() const { return ondo::Rotation::identity(); }
    /// Converts the name and calls the setter by value.
    virtual void setItdLatencyMode(const ondo::String& name);
    virtual void setItdLatencyMode(ItdLatencyMode /*mode*/) {}
    virtual ItdLatencyMode getItdLatencyMode() const { return 0; }
    virtual void setCrossfadeDuration(float /*ms*/) {}
    virtual float getCrossfadeDuration() const { return 0.0f; }
    virtual void setCrossfadeType(CrossfadeType /*type*/) {}
    virtual CrossfadeType getCrossfadeType() const { return 0; }
    virtual void setKnnNumberOfNeighbors(std::uint32_t /*source*/, std::uint32_t /*count*/) {}
    virtual bool is2D() const { return false; }
    /// Appends a description of the panner, one line a fact.
    virtual void getInfos(StringArray& lines) const;
    /// Moves one source; `immediate` jumps instead of gliding.
    virtual void setSourcePosition(std::uint32_t source, const ondo::Point3& position, bool immediate) = 0;
    /// Places the speakers. The vector-based panners refuse a layout they can't serve
    /// with an `ondo::Exception`.
    virtual void setSpeakers(const ondo::Point3Array& /*speakers*/) {}

protected:
    /// Runs `setSourcePosition` for every source at its stored position, in order: the
    /// one routine for changes that touch every source.
    void recomputeAllSources();
    /// The mute flag of `source` as last set by the control thread. Any thread.
    bool isSourceMuted(std::uint32_t source) const
    {
        return std::atomic_ref<std::int16_t>(const_cast<std::int16_t&>(sourcesMute[source]))
                   .load(std::memory_order_relaxed) != 0;
    }

    ondo::Point3Array sourcesPosition;
    ondo::Point3Array speakersPosition;
    ondo::Vector<std::int16_t> sourcesMute;
    Type type = Null;
    SubType subType = Direct;
    PanOSCReceiver oscReceiver{*this};

private:
    friend class PanOSCReceiver;
};
} // namespace Quor
