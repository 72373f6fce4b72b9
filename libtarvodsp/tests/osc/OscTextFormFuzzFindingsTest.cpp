#include "osc/TarvoDspOscMessage.h"

#include "common/TarvoDspException.h"

#include <gtest/gtest.h>

namespace
{
// Inputs on which fuzz/OscTextFuzzer.cpp once failed, kept with what they do now.
TEST(OscMessageText, FuzzerFindingsStayAsRegressionInputs)
{
    // One apostrophe alone does not quote: it stays in the address.
    const ondo::OSCMessage message = ondo::OSCMessage::fromText("'only quoted");
    EXPECT_EQ(message.getText(), "/'only");
    ASSERT_EQ(message.getNumArguments(), 1u);
    EXPECT_EQ(message.getArgument(0).getString(), "quoted");
    // Its text form pairs that apostrophe with the argument's quote, so a blank lands in the
    // address, which refuses it.
    EXPECT_EQ(message.toText(), "/'only 'quoted'");
    EXPECT_THROW(ondo::OSCMessage::fromText(message.toText()), ondo::Exception);
}
} // namespace
