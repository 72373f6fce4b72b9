#pragma once

#include "dsp/TarvoDspActivitySnapshot.h"
#include "dsp/TarvoDspFadedBiquadBatch.h"
#include "dsp/TarvoDspFadedHLShelf.h"
#include "dsp/TarvoDspMultichannelProcessor.h"

#include <atomic>
#include <cstdint>

namespace ondo
{
/// Independent crossfading shelves on N channels. Channels that play one biquad alone
/// through a block run side by side in the vector unit; their output is the same as each
/// channel's own kernel would give.
class MultiFadedHLShelf : public MultichannelProcessor<FadedHLShelf>
{
public:
    static constexpr float shelfCrossfadeTimeMs = 30.0f;

    /// Control thread; allocates.
    explicit MultiFadedHLShelf(std::uint32_t numChannels);

    /// A channel's output may be its own input, but not another channel's. Audio thread;
    /// real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// Runs every channel's stage update for the coming block ahead of `process`, and tells
    /// whether the block would leave every sample as it is: each channel plays a gain of 1
    /// alone and carries signal. Then `process` must follow, or after true `passBlock`, which
    /// lets an owner skip a pass over samples that would not change. Audio thread; real-time
    /// safe.
    bool beginBlock();
    /// The block of a shelf that `beginBlock` found transparent, samples untouched.
    void passBlock();
    /// For owners that run the channels themselves: the stage updates of `beginBlock` (or a
    /// quiet block's reuse of the last ones), and what each channel's gave: the instance that
    /// plays alone through the block, or null for a channel that warms up, fades or is
    /// silent. Each channel's block must follow: that instance's kernel, or else its
    /// `runBlock`. Audio thread; real-time safe.
    BiquadIPP* const* beginChannelBlocks();

    /// Whether the last `beginBlock` could reuse the stage updates of the block before:
    /// no hand-over since, every playing channel steady, the same channels live. For tests.
    bool wasLastBlockQuiet() const { return quietBlock; }

    /// To each channel. Any thread without `immediately`; real-time safe.
    void setParameters(const HLShelfParameters& parameters, bool immediately);
    void setParameters(std::uint32_t channel, const HLShelfParameters& parameters, bool immediately);
    void setCrossfadeTime(float ms);

    /// "/crossfadetime" n (floored at 0) and "/params" with six numbers (G0 Gl Gm Gh fl fh,
    /// to every channel, faded), after the "/dsp" subtree. Thread of the caller.
    bool processOscMessage(const OSCMessage& message, std::int32_t& context) override;
    /// The "/dsp" state, then channel 0's "/crossfadetime" and "/params".
    OSCBundle getState() const override;
    OscDocumentation getDocumentation() const override;
    /// "G0 = 0.00, Gl = 0.00, Gm = 0.00, Gh = 0.00, fl = 250, fh = 4000" for channel 0.
    String getParametersText() const;

    /// Control thread; allocates.
    void setNumChannels(std::uint32_t n) override;

protected:
    FadedHLShelf* createChannel() override { return new FadedHLShelf(); }

private:
    FadedBiquadBatch batch;
    /// What each channel's stage update gave for the block, once `beginBlock` ran.
    Vector<BiquadIPP*> begun;
    bool blockBegun = false;
    /// Bumped by every channel's hand-over (release); read at the head of a block (acquire).
    std::atomic<std::uint32_t> changes{0};
    // The audio thread's memory of the last full round of stage updates.
    std::uint32_t changesSeen = 0;
    ActivitySnapshot activitySeen;
    bool steadySeen = false;
    bool transparentSeen = false;
    bool quietBlock = false;
    /// The last block went through `passBlock` whole: every begun section's memory is silent.
    bool passedWhole = false;
};
} // namespace ondo
