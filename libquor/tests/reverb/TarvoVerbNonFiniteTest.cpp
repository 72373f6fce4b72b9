#include "reverb/QuorTarvoVerb.h"

#include "TestSignals.h"
#include "math/TarvoDspDenormals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <string>

namespace
{
using Quor::TarvoVerb;
using ondo::HLShelfParameters;
using ondo::Point3;

constexpr std::uint32_t blockSize = 256;
const float badValues[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                           -std::numeric_limits<float>::infinity(), 3e38f, -3e38f};
const HLShelfParameters flat{0.0f, 0.0f, 0.0f, 0.0f, 177.0f, 5657.0f};
const HLShelfParameters decay{1.995f, 1.0f, 1.0f, 0.5f, 250.0f, 8000.0f};

/// The object's defaults, as the host applies them at creation.
void applyDefaults(TarvoVerb& verb)
{
    verb.setDirectFilter(flat);
    verb.setRoomFilter(flat);
    verb.setEarlyFilter(flat);
    verb.setClusterFilter(flat);
    verb.setReverbTimes(decay, 0.0f);
    verb.setReverbDensity(0.86f);
    verb.setAirEnabled(true);
    verb.setAirCutoff(10000.0f);
    verb.setEarlyMin(22.22f);
    verb.setEarlyMax(39.71f);
    verb.setEarlyDistribution(0.5f);
    verb.setClusterMin(42.47f);
    verb.setClusterMax(105.64f);
    verb.setClusterDistribution(0.5f);
    verb.setReverbMin(95.37f);
    verb.setEarlyWidth(30.0f);
    verb.setEarlyShape(0.5f);
    verb.setSpeakerPositions(ondo::Point3Array::defaultLayout(verb.getNumOutputs()));
    for (std::uint32_t i = 0; i < verb.getNumInputs(); ++i)
        verb.setSourcePosition(i, Point3(0.0f, 2.0f, 0.0f));
}

HLShelfParameters withField(HLShelfParameters p, int field, float v)
{
    float* fields[] = {&p.G0, &p.Gl, &p.Gm, &p.Gh, &p.fl, &p.fh};
    *fields[field] = v;
    return p;
}

struct Setter
{
    std::string name;
    std::function<void(TarvoVerb&, float)> apply;
};

/// Every way a number reaches the engine from outside, one entry each.
std::vector<Setter> everySetter()
{
    std::vector<Setter> setters = {
        {"source x", [](TarvoVerb& v, float x) { v.setSourcePosition(0, Point3(x, 1.0f, 0.0f)); }},
        {"source xyz", [](TarvoVerb& v, float x) { v.setSourcePosition(1, Point3(x, x, x)); }},
        {"speaker", [](TarvoVerb& v, float x) {
             ondo::Point3Array layout = ondo::Point3Array::defaultLayout(v.getNumOutputs());
             layout[1] = Point3(x, x, 0.0f);
             try
             {
                 v.setSpeakerPositions(layout);
             }
             catch (const std::exception&)
             {
                 // A layout the panner refuses leaves the old one standing: also finite.
             }
         }},
        {"reverb gain", [](TarvoVerb& v, float x) { v.setReverbGain(x); }},
        {"density", [](TarvoVerb& v, float x) { v.setReverbDensity(x); }},
        {"air cutoff", [](TarvoVerb& v, float x) { v.setAirCutoff(x); }},
        {"early min", [](TarvoVerb& v, float x) { v.setEarlyMin(x); }},
        {"early max", [](TarvoVerb& v, float x) { v.setEarlyMax(x); }},
        {"early distribution", [](TarvoVerb& v, float x) { v.setEarlyDistribution(x); }},
        {"early width", [](TarvoVerb& v, float x) { v.setEarlyWidth(x); }},
        {"early shape", [](TarvoVerb& v, float x) { v.setEarlyShape(x); }},
        {"cluster min", [](TarvoVerb& v, float x) { v.setClusterMin(x); }},
        {"cluster max", [](TarvoVerb& v, float x) { v.setClusterMax(x); }},
        {"cluster distribution", [](TarvoVerb& v, float x) { v.setClusterDistribution(x); }},
        {"reverb min", [](TarvoVerb& v, float x) { v.setReverbMin(x); }},
        {"reverb times dB", [](TarvoVerb& v, float x) { v.setReverbTimes(decay, x); }},
    };
    for (int field = 0; field < 6; ++field)
    {
        const std::string f = std::to_string(field);
        setters.push_back({"decay field " + f, [field](TarvoVerb& v, float x) {
                               v.setReverbTimes(withField(decay, field, x), 0.0f);
                           }});
        setters.push_back({"direct field " + f,
                           [field](TarvoVerb& v, float x) { v.setDirectFilter(withField(flat, field, x)); }});
        setters.push_back(
            {"room field " + f, [field](TarvoVerb& v, float x) { v.setRoomFilter(withField(flat, field, x)); }});
        setters.push_back(
            {"early field " + f, [field](TarvoVerb& v, float x) { v.setEarlyFilter(withField(flat, field, x)); }});
        setters.push_back({"cluster field " + f,
                           [field](TarvoVerb& v, float x) { v.setClusterFilter(withField(flat, field, x)); }});
    }
    return setters;
}

/// Runs `blocks` blocks of seeded noise (with `poison` written over every 97th sample when
/// it is not 0) and tells whether every output sample was finite; `energy` gets their sum of
/// squares.
bool runFinite(TarvoVerb& verb, int blocks, float poison, double& energy)
{
    tarvo::testing::ChannelBlock in(verb.getNumInputs(), blockSize), out(verb.getNumOutputs(), blockSize);
    bool finite = true;
    energy = 0.0;
    for (int b = 0; b < blocks; ++b)
    {
        for (std::uint32_t c = 0; c < verb.getNumInputs(); ++c)
        {
            in.data[c] = tarvo::testing::seededNoise(blockSize, 7u * unsigned(b) + c, 0.5f);
            if (poison != 0.0f)
                for (std::size_t k = c; k < blockSize; k += 97)
                    in.data[c][k] = poison;
        }
        for (std::uint32_t c = 0; c < verb.getNumInputs(); ++c)
            in.pointers[c] = in.data[c].data();
        verb.process(out.pointers.data(), in.pointers.data(), blockSize);
        for (const auto& channel : out.data)
            for (float v : channel)
            {
                finite = finite && std::isfinite(v);
                energy += double(v) * v;
            }
    }
    return finite;
}

std::unique_ptr<TarvoVerb> makeVerb()
{
    auto verb = std::make_unique<TarvoVerb>(4);
    verb->configure(44100.0f, blockSize, 2, 3);
    applyDefaults(*verb);
    return verb;
}

// After each bad value the output stays finite, and once the defaults are back the room
// answers again: nothing non-finite was left in its memories.
TEST(TarvoVerbNonFinite, EverySetterKeepsTheOutputFiniteAndTheTailRecovers)
{
    ondo::primitives::setDenormalsAreZero(true);
    for (const Setter& setter : everySetter())
    {
        // One room for the five values: each must leave it as clean as it found it.
        auto verb = makeVerb();
        for (float bad : badValues)
        {
            double energy = 0.0;
            setter.apply(*verb, bad);
            EXPECT_TRUE(runFinite(*verb, 8, 0.0f, energy)) << setter.name << " " << bad;
            applyDefaults(*verb);
            const bool recovered = runFinite(*verb, 8, 0.0f, energy);
            EXPECT_TRUE(recovered && energy > 1e-3) << setter.name << " " << bad << ": energy " << energy;
        }
    }
    ondo::primitives::setDenormalsAreZero(false);
}

TEST(TarvoVerbNonFinite, UnusableInputSamplesBecomeSilenceAndAreCounted)
{
    ondo::primitives::setDenormalsAreZero(true);
    for (float bad : badValues)
    {
        auto verb = makeVerb();
        double energy = 0.0;
        EXPECT_TRUE(runFinite(*verb, 24, bad, energy)) << bad;
        // Every 97th sample of each 256-sample block, from the channel's index: 3 in channel 0,
        // 3 in channel 1 (1, 98, 195), 24 blocks.
        EXPECT_EQ(verb->getNonFiniteInputCount(), 24u * 6u) << bad;
        EXPECT_TRUE(runFinite(*verb, 8, 0.0f, energy) && energy > 1e-3) << bad;
    }
    ondo::primitives::setDenormalsAreZero(false);
}
} // namespace
