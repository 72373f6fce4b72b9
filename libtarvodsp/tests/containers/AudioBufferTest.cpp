#include "containers/TarvoDspAudioBuffer.h"
#include "containers/TarvoDspAudioBufferReference.h"

#include <gtest/gtest.h>

namespace
{
TEST(AudioBuffer, ChannelsLieOneAfterAnother)
{
    ondo::AudioBuffer<float> b(3, 10);
    ASSERT_EQ(b.getNumChannels(), 3u);
    for (std::uint32_t c = 0; c < 3; ++c)
        EXPECT_EQ(b[c], b.getSamples().data() + c * 10);
}

TEST(AudioBuffer, UnchangedSizeTouchesNothing)
{
    ondo::AudioBuffer<float> b(2, 64);
    float* first = b[0];
    b.setNumSamples(64);
    b.setSize(2, 64);
    EXPECT_EQ(b[0], first);
}

TEST(AudioBuffer, NoChannelsIsValid)
{
    ondo::AudioBuffer<float> b;
    b.setSize(0, 100);
    EXPECT_EQ(b.getNumChannels(), 0u);
    EXPECT_EQ(b.getNumSamples(), 100u);
    EXPECT_EQ(b.getChannels(), nullptr);
}

TEST(AudioBuffer, ResizeKeepingContentsPadsWithZeros)
{
    ondo::AudioBuffer<float> b(3, 4);
    for (std::uint32_t c = 0; c < 3; ++c)
        for (int i = 0; i < 4; ++i)
            b[c][i] = static_cast<float>(10 * c + i + 1);
    b.resizeKeepingContents(2, 6);
    ASSERT_EQ(b.getNumChannels(), 2u);
    ASSERT_EQ(b.getNumSamples(), 6u);
    for (std::uint32_t c = 0; c < 2; ++c)
    {
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(b[c][i], static_cast<float>(10 * c + i + 1));
        EXPECT_EQ(b[c][4], 0.0f);
        EXPECT_EQ(b[c][5], 0.0f);
        EXPECT_EQ(b[c], b.getSamples().data() + c * 6);
    }
}

TEST(AudioBuffer, MemorySizeFollowsCapacity)
{
    ondo::AudioBuffer<float> b(4, 65536);
    EXPECT_NEAR(b.getMemorySizeInMegaBytes(), 1.0, 1e-6);
    EXPECT_EQ(ondo::AudioBufferBase<float>(2, 8).getMemorySizeInMegaBytes(), 0.0);
}

TEST(AudioBufferReference, RefersIntoOtherStorageAtAnOffset)
{
    ondo::AudioBuffer<float> storage(2, 16);
    ondo::AudioBufferReference<float> view;
    view.refer(storage.getChannels(), 2, 8, 4);
    EXPECT_EQ(view.getNumSamples(), 8u);
    EXPECT_EQ(view[1], storage[1] + 4);
}

TEST(AudioBufferBase, ChannelCountChangeKeepsRemainingPointers)
{
    float a = 0, b = 0;
    ondo::AudioBufferBase<float> base(2, 1);
    base.getChannels()[0] = &a;
    base.getChannels()[1] = &b;
    base.setNumChannels(3);
    EXPECT_EQ(base[0], &a);
    EXPECT_EQ(base[1], &b);
    EXPECT_EQ(base[2], nullptr);
    base.setNumChannels(1);
    EXPECT_EQ(base[0], &a);
}
} // namespace
