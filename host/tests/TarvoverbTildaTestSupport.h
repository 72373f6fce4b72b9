#pragma once

#include "MaxSubstitute.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarvo::testing
{
namespace mx = tarvo::maxsubstitute;

/// Loads the external once and starts each test with an empty console.
class TarvoverbTildaTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        mx::loadExternal(ext_main);
        mx::clearConsole();
    }

    static std::vector<std::string> errors() { return mx::consoleTexts(mx::ConsoleLine::Kind::Error); }
    static std::vector<std::string> warnings() { return mx::consoleTexts(mx::ConsoleLine::Kind::Warning); }
    static std::vector<std::string> posts() { return mx::consoleTexts(mx::ConsoleLine::Kind::Post); }
    static std::vector<std::string> bugs() { return mx::consoleTexts(mx::ConsoleLine::Kind::Bug); }

    /// The values of an attribute as numbers.
    static std::vector<double> numbers(const mx::Box& box, const std::string& attribute)
    {
        std::vector<double> values;
        for (const t_atom& a : box.get(attribute))
            values.push_back(atom_getfloat(&a));
        return values;
    }
    static double number(const mx::Box& box, const std::string& attribute, std::size_t index = 0)
    {
        const std::vector<double> values = numbers(box, attribute);
        return index < values.size() ? values[index] : -12345.0;
    }
};
} // namespace tarvo::testing
