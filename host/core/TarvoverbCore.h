#pragma once

#include "TarvoverbAtom.h"
#include "TarvoverbAttributeTable.h"
#include "TarvoverbConsole.h"
#include "TarvoverbState.h"

#include "dsp/TarvoDspHLShelfParameters.h"

#include <optional>
#include <string>
#include <vector>

namespace tarvo::host
{
/// The behaviour of a tarvoverb~ instance that every host shares: building the engine, the
/// common setter of the attributes, the position messages and the update steps that carry
/// the stored values to `Quor::TarvoVerb`. A host binding owns the `ObjectState`, hands its
/// calls here and turns the reports into its console.
///
/// Every operation runs on the host's control thread and may allocate; none takes a lock,
/// as the engine's setters hand their values to the audio thread themselves. Operations
/// that return true made an effective change: the host tells its observers.
class TarvoverbCore
{
public:
    static constexpr float creationSampleRate = 44100.0f;
    static constexpr std::uint32_t creationBlockSize = 64;

    TarvoverbCore(ObjectState& state, Console& console) : s(state), console(console) {}

    /// Builds the engine for the stored counts, unless it exists. Reports each failure and
    /// leaves the instance without engine. The stored positions become the engine's own.
    void createEngine();
    /// Destroys the engine. Not while audio runs.
    void destroyEngine();

    /// Readies the engine for the host's sample rate (Hz) and block size before audio starts.
    /// At the rate and size it has, its memories are emptied; at others it is set up anew
    /// and every stored value is applied again, so that all that derives from the rate is
    /// computed at the new one, exactly as for an engine built at that rate. Control thread,
    /// while audio is stopped; allocates.
    void prepare(float sampleRate, std::uint32_t blockSize);
    /// Hands the engine every stored value: the four filters, the decay, the structure, the
    /// speakers, then the sources.
    void applyStoredValues();

    /// The common setter: stores `atoms` into the attribute `name` and applies the change.
    /// An empty list does nothing.
    bool setAttribute(std::string_view name, Atoms atoms);
    /// The auto-mute threshold (s): stored, and handed to the engine when it exists.
    bool setAutomute(float seconds);

    /// "source index [format] numbers".
    bool sourceMessage(Atoms atoms);
    /// "speaker index [format] numbers" (also "loudspeaker").
    bool speakerMessage(Atoms atoms);
    /// "speakers [format] numbers" (also "loudspeakers").
    bool speakersMessage(Atoms atoms);

    /// What a "reverb name number" message asks: the attribute to set through the host, so
    /// that its clip filter applies, and the value. Reports and returns nothing when the
    /// message is not understood.
    struct AttributeChange
    {
        const AttributeEntry* attribute;
        double value; ///< whole for a long attribute
    };
    std::optional<AttributeChange> reverbMessage(Atoms atoms);

    /// The live values of an attribute, as the host's getter shows them.
    std::vector<Atom> valuesOf(const AttributeEntry& entry) const;
    /// How many values an attribute holds now.
    int liveLength(const AttributeEntry& entry) const;

    /// A message of the reverberator's own control language, "/address arguments...",
    /// applied at once. Reports a message the engine does not understand, or its failure.
    bool oscMessage(std::string_view address, Atoms atoms);
    /// "preset load FILE" and "preset export FILE" in any of the preset file forms (by the
    /// extension: .txt, .osc, .xml, .coll). A relative FILE is taken in `directory`.
    bool presetMessage(Atoms atoms, const std::string& directory);

    const ObjectState& state() const { return s; }

    /// The engine's texts for an inlet and an outlet; empty beyond its channels.
    std::string inletText(long index) const;
    std::string outletText(long index) const;
    /// The engine's description lines.
    std::vector<std::string> describeDsp() const;

    /// Clips a value as the attribute's filter does; values pass unchanged without a filter.
    static double clip(const AttributeEntry& entry, double value);

private:
    /// After a message in the engine's own language: the stored values become the engine's,
    /// so that the attributes read back what the engine now does.
    void adoptEngineState();
    void reverbStep();
    void structureStep();
    void sendSourcePositions();
    void speakersStep();
    bool setFilter(float* field, Atoms atoms, const char* name, void (Quor::TarvoVerb::*setter)(const ondo::HLShelfParameters&));
    bool setCountAttribute(std::int64_t& field, std::int64_t* count, Atoms atoms, const char* what);

    ObjectState& s;
    Console& console;
};
} // namespace tarvo::host
