#include "dsp/TarvoDspBiquadCookbook.h"
#include "dsp/TarvoDspBiquadIPP.h"
#include "dsp/TarvoDspCascadeIPP.h"

#include "AllocationCounter.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{
using ondo::CascadeCoefficients;
using ondo::CascadeIPP;

CascadeCoefficients sixBands()
{
    CascadeCoefficients c(6);
    const ondo::FilterShape shapes[] = {ondo::FilterShape::peak,     ondo::FilterShape::lowShelf,
                                        ondo::FilterShape::highpass, ondo::FilterShape::notch,
                                        ondo::FilterShape::allpass,  ondo::FilterShape::highShelf};
    for (int i = 0; i < 6; ++i)
    {
        ondo::BiquadCookbook band(shapes[i]);
        band.setFrequency(100.0 * (i + 1) * (i + 1));
        band.setGain(3.0 - i);
        c.setSection(i, band.getCoefficients());
    }
    return c;
}

TEST(CascadeIPP, EqualsItsSectionsRunOneAfterTheOther)
{
    const CascadeCoefficients c = sixBands();
    CascadeIPP cascade(6);
    cascade.setCoefficients(c);
    std::vector<float> in(1024, 0.0f), out(1024), chain(1024);
    in[0] = 1.0f;
    in[300] = -0.5f;
    cascade.filter(out.data(), in.data(), 1024);
    chain = in;
    for (int i = 0; i < 6; ++i)
    {
        ondo::BiquadIPP section;
        section.setCoefficients(c[i]);
        section.filter(chain.data(), chain.data(), 1024);
    }
    EXPECT_EQ(out, chain);
}

TEST(CascadeIPP, WithoutSectionsInPlaceLeavesTheBlockUntouched)
{
    CascadeIPP cascade(0);
    EXPECT_EQ(cascade.getNumCoefficients(), 0);
    std::vector<float> block{1.0f, -2.0f, 3.0f};
    cascade.filter(block.data(), block.data(), 3);
    EXPECT_EQ(block, (std::vector<float>{1.0f, -2.0f, 3.0f}));
    std::vector<float> out(3);
    cascade.filter(out.data(), block.data(), 3);
    EXPECT_EQ(out, block);
    cascade.clear();
}

TEST(CascadeIPP, ResizingKeepsTheSectionsAndClears)
{
    CascadeIPP cascade(2);
    CascadeCoefficients c(2);
    c.setSection(0, {0.5, 0, 0, 1, -0.5, 0});
    cascade.setCoefficients(c);
    std::vector<float> one(4, 0.0f), out(4);
    one[0] = 1.0f;
    cascade.filter(out.data(), one.data(), 4);
    cascade.setNumSections(3);
    EXPECT_EQ(cascade.getNumCoefficients(), 18);
    EXPECT_EQ(cascade.getSections()[0].a1, -0.5);
    std::vector<float> again(4);
    cascade.filter(again.data(), one.data(), 4);
    EXPECT_EQ(again, out) << "a cleared state gives the same impulse response";
}

TEST(CascadeIPP, FilteringAllocatesNothing)
{
    CascadeIPP cascade(6);
    cascade.setCoefficients(sixBands());
    const ondo::Vector<float> flat = sixBands().toFlat();
    std::vector<float> block(512, 0.25f);
    float* io = block.data();
    tarvo::testing::AllocationScope scope;
    cascade.process(&io, &io, 512);
    cascade.setCoefficients(flat.data());
    cascade.filter(io, io, 512);
    EXPECT_EQ(scope.count(), 0u);
}
} // namespace
