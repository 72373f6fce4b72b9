#include "text/TarvoDspUnitText.h"

#include <gtest/gtest.h>

namespace
{
TEST(UnitText, FrequenciesAndDurations)
{
    const struct
    {
        double hz;
        const char* withUnit;
        const char* withoutUnit;
    } cases[] = {
        {44100.0, "44.1 kHz", "44.1 k"}, {48000.0, "48 kHz", "48 k"},   {22050.0, "22050 Hz", "22050"},
        {999.9, "999 Hz", "999"},        {1000.0, "1 kHz", "1 k"},      {8000.0, "8 kHz", "8 k"},
        {2.5e6, "2.50 MHz", "2.50 M"},   {3.0e9, "3.00 GHz", "3.00 G"}, {0.0, "0 Hz", "0"},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(ondo::UnitText::frequency(c.hz), c.withUnit) << c.hz;
        EXPECT_EQ(ondo::UnitText::frequency(c.hz, false), c.withoutUnit) << c.hz;
    }
    EXPECT_EQ(ondo::UnitText::duration(10.9), "10 ms");
    EXPECT_EQ(ondo::UnitText::duration(0.4), "0 ms");
}
} // namespace
