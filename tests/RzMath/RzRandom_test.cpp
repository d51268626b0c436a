// The variates against their definitions, and the generator against the
// standard library's, run in the random fuzz target; the reference vectors
// are checked by the test RzRandom.ReferenceVectors (random_vectors_main.cpp).
#include <Rz/RzMath/RzRandom.h>

#include <math.h>
#include <stdint.h>
#include <stdlib.h>
#include <time.h>

#include <functional>

#include "support/RzTestSupport.h"

namespace {

const int32_t kModulus = 2147483647;

}  // namespace

TEST(RzRandom, SetSeed) {
    const struct {
        int32_t x, state;
    } cases[] = {{5, 5}, {-5, 5}, {0, 0}, {kModulus, 0}, {-kModulus, 0}, {INT32_MIN, 1}};
    for (auto c : cases) {
        RzRandom rng(77);
        rng.SetSeed(c.x);
        EXPECT_EQ(rng.GetSeed(), c.state) << c.x;
    }
    RzRandom fixed(0);  // the fixed point
    EXPECT_EQ(fixed.NextSeed(), kModulus);
    EXPECT_EQ(fixed.Random(), 1.0);
}

TEST(RzRandom, RandomSeedCountsAndAddsTheClock) {
    const int32_t saved = RzRandom::m_seedoffset;
    for (int32_t offset : {0, 41, kModulus - 1, INT32_MAX}) {
        RzRandom::m_seedoffset = offset;
        RzRandom rng(1);
        const time_t before = time(nullptr);
        rng.RandomSeed();
        const time_t after = time(nullptr);
        const int32_t next = int32_t(uint32_t(offset) + 1u);
        EXPECT_EQ(RzRandom::m_seedoffset, next);
        bool matched = false;
        for (time_t now = before; now <= after; ++now) {
            const uint32_t sum =
                uint32_t(RzRandom::Random(int32_t(llabs(next) % kModulus))) + uint32_t(now);
            matched |= rng.GetSeed() == llabs(int64_t(int32_t(sum))) % kModulus;
        }
        EXPECT_TRUE(matched) << offset;
    }
    RzRandom::m_seedoffset = saved;
}

// Sample means, so that a wrong constant shared by the library and the
// oracle of the reference vectors would still show.
TEST(RzRandom, SampleMeans) {
    const struct {
        const char* name;
        double mean, tolerance;
        std::function<double(RzRandom&)> draw;
    } cases[] = {
        {"Normal", 10.0, 0.05, [](RzRandom& r) { return r.Normal(10.0, 2.0); }},
        {"Normal squared", 1.0, 0.04, [](RzRandom& r) { return pow(r.Normal(0.0, 1.0), 2); }},
        {"Exponential", 2.0, 0.06, [](RzRandom& r) { return r.Exponential(2.0); }},
        {"Geometric", 1.0, 0.05, [](RzRandom& r) { return double(r.Geometric(0.5)); }},
        {"Poisson", 3.0, 0.05, [](RzRandom& r) { return double(r.Poisson(3.0)); }},
    };
    for (const auto& c : cases) {
        RzRandom rng(31415926);
        double sum = 0.0;
        for (int i = 0; i < 20000; ++i) sum += c.draw(rng);
        EXPECT_NEAR(sum / 20000, c.mean, c.tolerance) << c.name;
    }
}
