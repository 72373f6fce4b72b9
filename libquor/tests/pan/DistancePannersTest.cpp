#include "pan/QuorDbapPanning2D.h"
#include "pan/QuorDbapPanning3D.h"
#include "pan/QuorKnnPanning.h"
#include "pan/QuorNullPanning.h"
#include "pan/QuorSPCAmplitudePanning.h"
#include "pan/QuorVDbapPanning.h"

#include "AllocationCounter.h"
#include "PanTestSupport.h"
#include "SpeakerLayouts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace
{
using Quor::Pan;

template <typename T>
bool isA(const std::unique_ptr<Pan>& p)
{
    return dynamic_cast<const T*>(p.get()) != nullptr;
}

TEST(DistancePanners, FactoryServesEachFromItsCounts)
{
    EXPECT_TRUE(isA<Quor::DbapPanning2D>(Pan::create(2, 1, Pan::Dbap2D, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::DbapPanning3D>(Pan::create(2, 1, Pan::Dbap3D, Pan::Early)));
    EXPECT_TRUE(isA<Quor::VDbapPanning>(Pan::create(2, 3, Pan::VDbap, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::KnnPanning>(Pan::create(2, 1, Pan::Knn, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::SPCAmplitudePanning>(Pan::create(1, 0, Pan::Spcap, Pan::Direct))) << "sources count here";
    for (const auto type : {Pan::Dbap2D, Pan::Dbap3D, Pan::Knn})
        EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(2, 0, type, Pan::Direct))) << Pan::typeToString(type);
    EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(2, 2, Pan::VDbap, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(0, 4, Pan::Spcap, Pan::Direct)));
    const auto knn = Pan::create(1, 4, Pan::Knn, Pan::Direct);
    EXPECT_EQ(knn->getTypeName(), "knn");
    EXPECT_TRUE(knn->isAmplitudePanning());
}

TEST(DistancePanners, NothingAllocatesWhilePanningOrMovingSources)
{
    for (const auto type : {Pan::Dbap2D, Pan::Dbap3D, Pan::VDbap, Pan::Knn, Pan::Spcap})
    {
        const auto p = Pan::create(3, 8, type, Pan::Direct);
        p->setSpeakers(tarvo::testing::cube());
        p->setKnnNumberOfNeighbors(1, 3);
        p->setKnnNumberOfNeighbors(2, 8);
        p->setDbapSpreadMode(1);
        p->setAllSourcesSpreadByDirection(10.0f, 0.0f, 20.0f);
        Quor::testing::Block in(3, 700, 0.25f), out(8, 700);
        tarvo::testing::AllocationScope scope;
        for (int b = 0; b < 6; ++b)
        {
            p->setSourcePosition(b % 3, {0.5f * b - 1.0f, 1.0f, 0.3f * b}, b == 2);
            p->setSourceSpread(b % 3, 15.0f * b);
            p->process(out.get(), in.get(), b == 3 ? 700 : 64);
            p->processAdd(out.get(), in.get(), 64);
        }
        EXPECT_EQ(scope.count(), 0u) << Pan::typeToString(type);
        float energy = 0.0f;
        for (const auto& channel : out.data)
            for (float v : channel)
            {
                ASSERT_TRUE(std::isfinite(v)) << Pan::typeToString(type);
                energy += v * v;
            }
        EXPECT_GT(energy, 0.0f) << Pan::typeToString(type);
    }
}
} // namespace
