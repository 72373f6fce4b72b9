#include "dsp/TarvoDspMixTerms.h"

#include <gtest/gtest.h>

#include <vector>

TEST(MixTerms, AddsGatheredTermsOnceThenForgetsThem)
{
    ondo::MixTerms terms;
    terms.reserve(2);
    const std::vector<float> a{1.0f, 2.0f, 3.0f}, b{-4.0f, 0.5f, 8.0f};
    std::vector<float> out{10.0f, 20.0f, 30.0f};
    terms.add(a.data(), 2.0f);
    terms.add(b.data(), 0.25f);
    terms.addInto(out.data(), 3);
    EXPECT_EQ(out, (std::vector<float>{11.0f, 24.125f, 38.0f}));
    terms.addInto(out.data(), 3);
    EXPECT_EQ(out, (std::vector<float>{11.0f, 24.125f, 38.0f})) << "a second pass has nothing left to add";
}
