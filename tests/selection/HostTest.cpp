#include "support/Host.h"
#include "support/Basics.h"

namespace Test {
namespace {

TEST(Host, AgreesWithNaiveModelsAfterEveryEdit) {
    for (unsigned seed = 0; seed < 25; ++seed) {
        Random random(seed);
        ASSERT_EQ(Host(random).run(400), "") << "seed " << seed;
    }
}

} // namespace
} // namespace Test
