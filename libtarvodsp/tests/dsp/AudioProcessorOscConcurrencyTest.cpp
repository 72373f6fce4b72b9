#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"

#include "AllocationCounter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace
{
// "/value i" records; "/dsp/..." goes through the shared handlers, as any processor's would.
class Recorder : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    Recorder() : AudioProcessorWithOscInAudioInterrupt(1, 1)
    {
        setup(44100.0f, 64, true);
        values.reserve(1 << 16);
        ondo::OSCAddressCache::prepare("/value"); // so the audio thread only looks it up
    }
    void process(float** outputs, float** inputs, std::uint32_t n) override
    {
        for (std::uint32_t i = 0; i < n; ++i)
            outputs[0][i] = inputs[0][i];
    }
    bool processOscMessage(const ondo::OSCMessage& message, std::int32_t& context) override
    {
        if (handleProcessorMessages(message, context))
            return true;
        if (!message.matches("/value") || !message.matchesSingle('i'))
            return false;
        values.push_back(message.getArgument(0).getInt32());
        return true;
    }
    std::vector<int> values; // audio thread only, read after it stops
};

// Control threads post while the audio thread drains and renders. Run under ThreadSanitizer
// in CI: the queue hand-over and the address cache must be free of data races.
TEST(AudioInterruptDrainConcurrency, ControlThreadsPostWhileTheAudioThreadDrains)
{
    constexpr int numPosters = 3;
    constexpr int perPoster = 3000;
    Recorder p;
    std::atomic<int> postersDone{0};
    std::vector<std::thread> posters;
    for (int t = 0; t < numPosters; ++t)
        posters.emplace_back([&, t] {
            for (int k = 0; k < perPoster; ++k)
            {
                p.addToPending(ondo::OSCMessage("/value").addArgument(std::int32_t{t * perPoster + k}));
                if (k % 500 == 0)
                    p.addToPending(ondo::OSCMessage::fromText("/dsp/bypass 0"));
            }
            postersDone.fetch_add(1, std::memory_order_release);
        });

    std::size_t blocksWithAllocationButNothingApplied = 0;
    std::size_t blocks = 0;
    std::thread audio([&] {
        std::vector<float> in(64, 0.5f), out(64);
        float* i[] = {in.data()};
        float* o[] = {out.data()};
        const auto runBlock = [&] {
            const std::size_t before = p.values.size();
            tarvo::testing::ThreadAllocationScope scope;
            p.processBlock(o, i, 64);
            if (scope.count() != 0 && p.values.size() == before)
                ++blocksWithAllocationButNothingApplied;
            ++blocks;
        };
        while (postersDone.load(std::memory_order_acquire) != numPosters)
            runBlock();
        for (int extra = 0; extra < 100; ++extra)
            runBlock(); // the last messages, then blocks with nothing pending
    });
    for (auto& t : posters)
        t.join();
    audio.join();

    EXPECT_EQ(blocksWithAllocationButNothingApplied, 0u) << "of " << blocks << " blocks";
    ASSERT_EQ(p.values.size(), std::size_t{numPosters * perPoster});
    std::vector<int> last(numPosters, -1);
    for (const int v : p.values)
    {
        const int poster = v / perPoster;
        EXPECT_GT(v, last[static_cast<std::size_t>(poster)]) << "each poster's messages keep their order";
        last[static_cast<std::size_t>(poster)] = v;
    }
}
} // namespace
