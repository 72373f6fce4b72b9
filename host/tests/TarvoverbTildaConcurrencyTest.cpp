#include "TarvoverbTildaTestSupport.h"

#include "AllocationCounter.h"

#include <atomic>
#include <cmath>
#include <thread>

namespace tarvo::testing
{
namespace
{
using TarvoverbTildaConcurrency = TarvoverbTildaTest;

// Blocks through the perform routine on one thread while another sets attributes and sends
// messages, as the host's scheduler does while audio runs: no allocation on the audio
// thread, finite output, and under ThreadSanitizer no data race.
TEST_F(TarvoverbTildaConcurrency, MessagesAndAttributesWhileBlocksAreRendered)
{
    constexpr long sources = 4, speakers = 4, block = 64;
    mx::Box box = mx::Box::create("tarvoverb~", {"numsources 4", "numspeakers 4"});
    ASSERT_TRUE(box);
    box.dsp(44100.0, block);
    std::vector<std::vector<double>> in(sources, std::vector<double>(block)), out(speakers, std::vector<double>(block));
    std::vector<double*> ins, outs;
    for (auto& c : in)
        ins.push_back(c.data());
    for (auto& c : out)
        outs.push_back(c.data());
    for (std::size_t c = 0; c < in.size(); ++c)
        for (long k = 0; k < block; ++k)
            in[c][std::size_t(k)] = std::sin(0.05 * double(k + 7 * long(c)));
    // The first blocks size the conversion buffers.
    box.perform(ins.data(), sources, outs.data(), speakers, block);

    std::atomic<bool> audioDone{false};
    std::atomic<int> changes{0};
    std::thread control([&] {
        const char* lines[] = {"tr0 3", "gain -6", "source 1 azim 30", "direct -3 0 0 -6 200 6000", "early start 30",
                               "cluster distr 0.3", "reverb airfreq 5000", "air 1", "speaker 2 ade 130 1 0",
                               "speakers ade 45 1 0 135 1 0 -135 1 0 -45 1 0", "modaldensity 2", "source 3 xyz 1 -1 0", "tr0 1",
                               "reset gain", "infinite 1", "infinite 0"};
        for (int i = 0; !audioDone; ++i)
        {
            box.send(lines[std::size_t(i) % std::size(lines)]);
            changes = i + 1;
        }
    });

    ThreadAllocationScope audioThread;
    bool finite = true;
    const int blocks = int(2.0 * 44100.0 / block); // two seconds: keeps the sanitizer run short
    // Blocks go on until the control thread has also had its turn: an optimised build renders
    // two seconds faster than a new thread starts.
    constexpr int wantedChanges = 50;
    for (int b = 0; (b < blocks || changes.load() < wantedChanges) && b < 1000 * blocks; ++b)
    {
        box.perform(ins.data(), sources, outs.data(), speakers, block);
        for (const auto& channel : out)
            for (double v : channel)
                finite &= std::isfinite(v);
    }
    const std::size_t allocations = audioThread.count();
    audioDone = true;
    control.join();
    EXPECT_GE(changes.load(), wantedChanges) << "the control thread must have run alongside";
    EXPECT_TRUE(finite);
    EXPECT_EQ(allocations, 0u);
}
} // namespace
} // namespace tarvo::testing
