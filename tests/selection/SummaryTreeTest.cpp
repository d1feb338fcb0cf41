// The examiner's internal tree, against a plain sum: sizes that a selection in a test does not reach.
#include "selection/SummaryTree.h" // internal: mathematics
#include "support/Basics.h"
#include "support/Random.h"

#include <numeric>

namespace {

struct Sum {
    long total = 0;
    void merge(const Sum& other) { total += other.total; }
};

TEST(SummaryTree, StaysTrueWhileItGrowsShrinksAndChanges) {
    ::Test::Random random(3);
    const auto below = [&](std::size_t n) { return static_cast<std::size_t>(random.below(static_cast<int>(n))); };
    using VEM_FN::FCurveLib::Private::SummaryTree;
    SummaryTree<long, Sum> tree;
    std::vector<long> leaves;
    std::size_t looks = 0;
    const auto add = [&](Sum& sum, long leaf) {
        ++looks;
        sum.total += leaf;
    };
    for (int step = 0; step < 3000; ++step) {
        // Sizes drift up to thousands and down to nothing again.
        const bool grow = step / 300 % 2 == 0;
        std::size_t edits = below(3) == 0 ? below(200) : below(4);
        for (; edits > 0; --edits) {
            const auto value = static_cast<long>(below(1000));
            if (!leaves.empty() && below(3) == 0) {
                const std::size_t i = below(leaves.size());
                tree[i] = leaves[i] = value;
                tree.touch(i);
            } else if (grow) {
                tree.add(value);
                leaves.push_back(value);
            } else if (!leaves.empty()) {
                const std::size_t i = below(leaves.size());
                EXPECT_EQ(tree.remove(i), leaves[i]);
                leaves[i] = leaves.back();
                leaves.pop_back();
            }
        }
        if (below(500) == 0) {
            tree.clear();
            leaves.clear();
        }
        ASSERT_EQ(tree.settle(add).total, std::accumulate(leaves.begin(), leaves.end(), 0L)) << "step " << step;
        ASSERT_EQ(tree.size(), leaves.size());
        looks = 0;
        tree.settle(add);
        ASSERT_EQ(looks, 0U);
        if (!leaves.empty()) {
            tree.touch(below(leaves.size()));
            tree.settle(add);
            ASSERT_LE(looks, 16U);
        }
    }
}

} // namespace
