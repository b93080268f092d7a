// LU and Gauss-Jordan inversion against hand-computed inverses and the edge cases of the rules.
#include "processing/MatrixFncts.h"

#include <gtest/gtest.h>

#include <vector>

namespace quarvex {
namespace {

struct LuCase {
    const char* name;
    std::vector<float> matrix; // by column
    bool ok;
    float det;
};

TEST(MatrixFncts, LudecompFlagsAndDeterminant) {
    const LuCase cases[] = {
        {"identity", {1, 0, 0, 0, 1, 0, 0, 0, 1}, true, 1.0F},
        {"exchange needed: stops at the zero pivot", {0, 1, 1, 0}, false, -99.0F},
        {"|det| = 1e-10: invertible but not OK", {1.0e-5F, 0, 0, 1.0e-5F}, false, 1.0e-10F},
        {"2x2 by hand: det 4*3 - 2*1", {4, 1, 2, 3}, true, 10.0F},
        {"exactly singular, last pivot 0", {1, 2, 2, 4}, false, 0.0F},
    };
    for (const LuCase& c : cases) {
        const int n = c.matrix.size() == 9 ? 3 : 2;
        std::vector<float> lu(c.matrix.size());
        float det = -99.0F;
        bool ok = true;
        LUDECOMP(c.matrix, lu, n, det, ok);
        EXPECT_EQ(ok, c.ok) << c.name;
        EXPECT_FLOAT_EQ(det, c.det) << c.name;
    }
}

TEST(MatrixFncts, InvertMatrixOfHandExample) {
    // [[4, 2], [1, 3]]: inverse [[0.3, -0.2], [-0.1, 0.4]].
    const std::vector<float> matrix{4, 1, 2, 3};
    std::vector<float> inverse(4);
    float det = 0.0F;
    bool ok = false;
    INVERT_MATRIX(matrix, inverse, 2, det, ok);
    ASSERT_TRUE(ok);
    const float expected[] = {0.3F, -0.1F, -0.2F, 0.4F};
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(inverse[static_cast<std::size_t>(i)], expected[i], 1.0e-6F) << i;
    }
}

TEST(MatrixFncts, GaussjOneByOne) {
    std::vector<double> a{4.0};
    std::vector<double> b{2.0, 8.0};
    EXPECT_TRUE(GAUSSJ(a, b, 1, 2));
    EXPECT_EQ(a[0], 0.25);
    EXPECT_EQ(b[0], 0.5);
    EXPECT_EQ(b[1], 2.0);
}

TEST(MatrixFncts, InvertGaussjNeedsPivotingAndRestoresColumns) {
    // A permutation-like matrix that Doolittle without exchanges cannot factor.
    const std::vector<double> a{0, 2, 1, 3, 0, 0, 0, 1, 4}; // by column
    std::vector<double> inverse(9);
    ASSERT_TRUE(INVERT_GAUSSJ(a, inverse, 3));
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            double sum = 0.0;
            for (int k = 0; k < 3; ++k) {
                sum += a[static_cast<std::size_t>(k * 3 + r)] *
                       inverse[static_cast<std::size_t>(c * 3 + k)];
            }
            EXPECT_NEAR(sum, r == c ? 1.0 : 0.0, 1.0e-14) << r << "," << c;
        }
    }
}

TEST(MatrixFncts, ZeroPivotIsReportedOnlyByTheFlag) {
    std::vector<double> a{1, 2, 2, 4};
    std::vector<double> inverse(4);
    EXPECT_FALSE(INVERT_GAUSSJ(a, inverse, 2));
}

} // namespace
} // namespace quarvex
