#pragma once

#include "containers/TarvoDspAudioBuffer.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspFastHadamardTransform.h"

#include <string>

namespace Quor
{
/// The reverberator's unitary mixer: an orthonormal N x N mix made by a fast structure,
/// then a permutation of the channels so that a channel does not come back into its own
/// delay line. No coefficients are stored.
class Shuffle : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    enum Mode : std::uint32_t
    {
        householder = 0,   ///< N neither 12 nor a power of two: I - 2/N * ones
        hadamard = 1,      ///< N a power of two
        mixed = 2,         ///< N = 12: three Hadamard transforms of 4, joined by the permutation
        hadamardQuor3 = 3, ///< reported by name only; never selected
    };

    /// The mode and the permutation follow from `numChannels`. Control thread; allocates.
    explicit Shuffle(std::uint32_t numChannels);

    /// `outputs` and `inputs` may be the same pointers. Audio thread; real-time safe for
    /// blocks up to the buffer size.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    void setBufferSize(std::uint32_t size) override;

    /// After the service and "/dsp" addresses: "/permutation" b, "/mode" s (true when it
    /// names the mode in force; the mode never changes), "/hadamard" s (the ordering).
    /// Thread of the caller; allocates.
    bool processOscMessage(const ondo::OSCMessage& message, std::int32_t& context) override;
    /// The "/dsp" state, "/mode", "/permutation", "/hadamard". Allocates.
    ondo::OSCBundle getState() const override;
    ondo::OscDocumentation getDocumentation() const override;

    Mode getMode() const { return mode; }
    std::string getModeName() const { return modeToText(mode); }
    std::uint32_t getNumChannels() const { return numChannels; }
    const ondo::Vector<std::uint32_t>& getPermutation() const { return permutation; }
    bool isPermutationEnabled() const { return permutationEnabled; }
    void setPermutationEnabled(bool enabled) { permutationEnabled = enabled; }

    /// Where the mix writes mixed channel c when it runs a column of samples at a time in
    /// registers (the natural-order Hadamard mix): entry c of the result, one of `outputs`
    /// as the permutation places it. Each mixed channel is then scaled by `getColumnGain`.
    /// For owners that fuse the mix with their own steps on a column; null when the mix
    /// runs otherwise. Audio thread; real-time safe.
    float* const* columnTargets(float* const* outputs);
    float getColumnGain() const { return columnGain; }

    /// "householder", "hadamard", "mixed", "hadamard-quor3"; empty for other values.
    static std::string modeToText(std::uint32_t value);
    /// The permutation used for `numChannels`: tuned tables for 4, 6, 8, 12 and 16, a
    /// rotation by one elsewhere.
    static ondo::Vector<std::uint32_t> defaultPermutation(std::uint32_t numChannels);

private:
    /// The Hadamard mix, permutation and gain in one pass where the transform can; false
    /// when it can't, having written nothing.
    bool mixInColumns(float** outputs, float** inputs, std::uint32_t numSamples);

    std::uint32_t numChannels;
    ondo::AudioBuffer<float> buffer;
    ondo::Vector<float> scratch;
    ondo::Vector<std::uint32_t> permutation;
    ondo::Vector<float*> channelPointers;
    Mode mode;
    bool permutationEnabled = true;
    float columnGain;
    ondo::FastHadamardTransform hadamardTransform;
};
} // namespace Quor
