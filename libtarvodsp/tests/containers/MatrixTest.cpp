#include "containers/TarvoDspMatrix.h"

#include "common/TarvoDspException.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace
{
ondo::Matrix<float> twoByThree()
{
    ondo::Matrix<float> m(2, 3);
    float value = 1.0f;
    for (std::uint64_t r = 0; r < 2; ++r)
        for (std::uint64_t c = 0; c < 3; ++c)
            m(r, c) = value++;
    return m;
}

TEST(Matrix, RowMajorLayout)
{
    const auto m = twoByThree();
    EXPECT_EQ(m.getNumElements(), 6u);
    EXPECT_EQ(m.getData()[1 * 3 + 2], 6.0f);
}

TEST(Matrix, MultipliesVectorsAndComplexArrays)
{
    const auto m = twoByThree();
    ondo::Vector<float> out;
    m.multiply(out, ondo::Vector<float>{1.0f, 0.0f, -1.0f});
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0], 1.0f - 3.0f);
    EXPECT_EQ(out[1], 4.0f - 6.0f);

    ondo::Matrix<float> column(5, 5);
    m.multiply(column, ondo::Vector<float>{1.0f, 1.0f, 1.0f});
    EXPECT_EQ(column.getNumRows(), 2u);
    EXPECT_EQ(column.getNumColumns(), 1u);
    EXPECT_EQ(column(1, 0), 15.0f);

    ondo::ComplexArray<float> z;
    m.multiply(z, ondo::ComplexArray<float>{{1, 2}, {0, 1}, {1, 0}});
    ASSERT_EQ(z.size(), 2u);
    EXPECT_EQ(z[0].re, 1.0f + 3.0f);
    EXPECT_EQ(z[0].im, 2.0f + 2.0f);
    EXPECT_EQ(z[1].re, 4.0f + 6.0f);
    EXPECT_EQ(z[1].im, 8.0f + 5.0f);
}

TEST(Matrix, ZeroColumnsGiveZeros)
{
    ondo::Matrix<double> m(3, 0);
    ondo::Vector<double> out{9.0};
    m.multiply(out, ondo::Vector<double>());
    ASSERT_EQ(out.size(), 3u);
    for (double x : out)
        EXPECT_EQ(x, 0.0);
}

TEST(Matrix, MultiplyElements)
{
    auto m = twoByThree();
    m.multiplyElements(twoByThree());
    EXPECT_EQ(m(1, 2), 36.0f);
    ondo::Matrix<int> empty;
    empty.multiplyElements(empty);
    EXPECT_EQ(empty.getNumElements(), 0u);
}

TEST(MatrixText, PlainForm)
{
    std::ostringstream s;
    twoByThree().print(s, "%g", "A");
    EXPECT_EQ(s.str(), "matrix 2 x 3\nA = \n1 2 3 \n4 5 6 \n");
    std::ostringstream unnamed;
    twoByThree().print(unnamed, 3);
    EXPECT_EQ(unnamed.str(), "matrix 2 x 3\n1 2 3 \n4 5 6 \n");
}

TEST(MatrixText, MatlabForm)
{
    std::ostringstream s;
    twoByThree().printMatlab(s, "%.1f", "A");
    EXPECT_EQ(s.str(), "% matrix 2 x 3\nA = [ ...\n1.0 2.0 3.0 ; ...\n4.0 5.0 6.0 ; ...\n...\n]; \n");
    std::ostringstream unnamed;
    twoByThree().printMatlab(unnamed, 2);
    EXPECT_EQ(unnamed.str(), "% matrix 2 x 3\n[ ...\n1 2 3 ; ...\n4 5 6 ; ...\n...\n]; \n");
}

TEST(MatrixText, LatexFormPrintsTheWordName)
{
    std::ostringstream s;
    twoByThree().printLatex(s, "%g", "A");
    EXPECT_EQ(s.str(), "\\begin{equation}\n\\begin{pmatrix}\nname = \n\\begin{array}{ccc}\n"
                       "                     1 & 2 & 3 \\\\ \n"
                       "\\noalign{\\smallskip} 4 & 5 & 6 \\\\ \n"
                       "\\end{array}\n\\end{pmatrix}\n\\end{equation}\n");
}

TEST(MatrixText, IntegerMatrixUsesIntegerFormats)
{
    ondo::Matrix<int> m(1, 2);
    m(0, 0) = 7;
    m(0, 1) = -3;
    std::ostringstream s;
    m.print(s, "%d");
    EXPECT_EQ(s.str(), "matrix 1 x 2\n7 -3 \n");
}

TEST(MatrixText, FormatWithoutOneMatchingConversionIsRefused)
{
    std::ostringstream s;
    EXPECT_THROW(twoByThree().print(s, "%s"), ondo::Exception);
    EXPECT_THROW(twoByThree().print(s, "%f %f"), ondo::Exception);
    EXPECT_THROW(twoByThree().print(s, "plain"), ondo::Exception);
    ondo::Matrix<int> m(1, 1);
    EXPECT_THROW(m.print(s, "%f"), ondo::Exception);
    EXPECT_NO_THROW(twoByThree().print(s, "%%%8.3e"));
}

TEST(MatrixText, WritesTextFileAndReportsFailure)
{
    const auto path = std::filesystem::temp_directory_path() / "tarvo-matrix-test.txt";
    ASSERT_TRUE(twoByThree().writeToTextFile(path.string(), "%g", "A"));
    std::ifstream in(path);
    std::stringstream content;
    content << in.rdbuf();
    EXPECT_EQ(content.str(), "matrix 2 x 3\nA = \n1 2 3 \n4 5 6 \n");
    std::filesystem::remove(path);
    EXPECT_FALSE(twoByThree().writeToTextFile("/nonexistent-folder/x.txt", 4));
}
} // namespace
