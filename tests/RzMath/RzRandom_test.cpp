#include <Rz/RzMath/RzRandom.h>

#include <math.h>
#include <stdint.h>
#include <stdlib.h>
#include <time.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "RandomVectors.h"
#include "support/RzTestSupport.h"

namespace {

const int32_t kModulus = 2147483647;

// Keeps m_seedoffset as it was before the test.
struct SeedOffsetGuard {
    int32_t saved = RzRandom::m_seedoffset;
    ~SeedOffsetGuard() { RzRandom::m_seedoffset = saved; }
};

}  // namespace

TEST(RzRandom, ReferenceVectors) {
    const char* root = getenv("RZ_TEST_SOURCE_DIR");
    ASSERT_NE(root, nullptr);
    std::string failures;
    const int checked =
        rzvectors::Check(std::string(root) + "/tests/data/random_vectors.txt", failures);
    EXPECT_GT(checked, 400);
    EXPECT_EQ(failures, "");
}

TEST(RzRandom, GeneratorCheckValues) {
    RzRandom rng(1);
    EXPECT_EQ(rng.NextSeed(), 48271);
    EXPECT_EQ(rng.NextSeed(), 182605794);
    EXPECT_EQ(rng.NextSeed(), 1291394886);
    for (int i = 3; i < 10000; ++i) rng.NextSeed();
    EXPECT_EQ(rng.GetSeed(), 399268537);
    EXPECT_EQ(RzRandom::Random(1), 48271);
    EXPECT_EQ(RzRandom::Random(2147483646), 2147435376);
}

TEST(RzRandom, StepAgreesWithMinstdRand) {
    std::vector<int32_t> states;
    for (int32_t x = 1; x <= 20000; ++x) states.push_back(x);
    for (int32_t x = kModulus - 20000; x < kModulus; ++x) states.push_back(x);
    for (int64_t x = 20001; x < kModulus - 20000; x += 2039) states.push_back(int32_t(x));
    std::minstd_rand reference;
    for (int32_t x : states) {
        reference.seed(static_cast<std::minstd_rand::result_type>(x));
        const int32_t expected = static_cast<int32_t>(reference());
        RzRandom rng(x);
        if (rng.NextSeed() != expected || RzRandom::Random(x) != expected) {
            ADD_FAILURE() << "state " << x;
            break;
        }
    }
}

// The step is defined for every 32-bit value, not just valid states: it never
// overflows and stays congruent to 48271 x, within 1..2^31 - 1.
TEST(RzRandom, StepOnAnyValue) {
    for (int32_t x : {INT32_MIN, INT32_MIN + 1, -kModulus + 1, -44488, -1, 0, 44487, 44488,
                      kModulus - 1, kModulus}) {
        const int64_t t = RzRandom::Random(x);
        EXPECT_TRUE(t >= 1 && t <= kModulus) << x;
        EXPECT_EQ(((t - 48271 * int64_t(x)) % kModulus + kModulus) % kModulus, 0) << x;
    }
}

TEST(RzRandom, SetSeedReduces) {
    const struct {
        int32_t x, state;
    } cases[] = {{5, 5},
                 {-5, 5},
                 {0, 0},
                 {kModulus, 0},
                 {-kModulus, 0},
                 {INT32_MIN, 1},
                 {kModulus - 1, kModulus - 1}};
    for (auto c : cases) {
        RzRandom rng(77);
        rng.SetSeed(c.x);
        EXPECT_EQ(rng.GetSeed(), c.state) << c.x;
    }
}

TEST(RzRandom, MultipleOfTheModulusIsAFixedPoint) {
    for (int32_t seed : {0, kModulus}) {
        RzRandom rng(1);
        rng.SetSeed(seed);
        EXPECT_EQ(rng.NextSeed(), kModulus);
        EXPECT_EQ(rng.NextSeed(), kModulus);
        EXPECT_EQ(rng.Random(), 1.0);
    }
}

TEST(RzRandom, RandomSeedCountsAndAddsTheClock) {
    SeedOffsetGuard guard;
    for (int32_t offset : {0, 41, kModulus - 1, INT32_MAX}) {
        RzRandom::m_seedoffset = offset;
        RzRandom rng(1);
        const time_t before = time(nullptr);
        rng.RandomSeed();
        const time_t after = time(nullptr);
        const int32_t next = offset == INT32_MAX ? INT32_MIN : offset + 1;
        EXPECT_EQ(RzRandom::m_seedoffset, next);
        bool matched = false;
        for (time_t now = before; now <= after; ++now) {
            const int64_t magnitude = llabs(next);  // step 2: |offset| mod m
            const uint32_t sum = uint32_t(RzRandom::Random(int32_t(magnitude % kModulus))) +
                                 uint32_t(now);  // steps 3 and 4, wrapping
            matched |= rng.GetSeed() == llabs(int64_t(int32_t(sum))) % kModulus;
        }
        EXPECT_TRUE(matched) << offset;
    }
    RzRandom a(1), b(1);
    a.RandomSeed();
    b.RandomSeed();
    EXPECT_NE(a.GetSeed(), b.GetSeed());
}

// Each variate takes a fixed number of uniforms, in order.
TEST(RzRandom, DrawsPerVariate) {
    const struct {
        const char* name;
        int draws;
        std::function<void(RzRandom&)> variate;
    } cases[] = {
        {"Bernoulli", 1, [](RzRandom& r) { r.Bernoulli(0.5); }},
        {"Binomial", 7, [](RzRandom& r) { r.Binomial(7, 0.5); }},
        {"Binomial(-2)", 0, [](RzRandom& r) { r.Binomial(-2, 0.5); }},
        {"Equilikely", 1, [](RzRandom& r) { r.Equilikely(1, 6); }},
        {"Geometric", 1, [](RzRandom& r) { r.Geometric(0.5); }},
        {"Pascal", 4, [](RzRandom& r) { r.Pascal(4, 0.5); }},
        {"Poisson(0)", 0, [](RzRandom& r) { EXPECT_EQ(r.Poisson(0.0), 0); }},
        {"Poisson(-1)", 0, [](RzRandom& r) { EXPECT_EQ(r.Poisson(-1.0), 0); }},
        {"Poisson(NaN)", 0, [](RzRandom& r) { EXPECT_EQ(r.Poisson(NAN), 0); }},
        {"Uniform", 1, [](RzRandom& r) { r.Uniform(0.0, 1.0); }},
        {"Exponential", 1, [](RzRandom& r) { r.Exponential(1.0); }},
        {"Erlang", 3, [](RzRandom& r) { r.Erlang(3, 1.0); }},
        {"Normal", 1, [](RzRandom& r) { r.Normal(0.0, 1.0); }},
        {"Lognormal", 1, [](RzRandom& r) { r.Lognormal(0.0, 1.0); }},
        {"Chisquare", 5, [](RzRandom& r) { r.Chisquare(5); }},
        {"Chisquare(0)", 0, [](RzRandom& r) { EXPECT_EQ(r.Chisquare(0), 0.0); }},
        {"Student", 4, [](RzRandom& r) { r.Student(3); }},
    };
    for (const auto& c : cases) {
        RzRandom rng(12345), reference(12345);
        c.variate(rng);
        for (int i = 0; i < c.draws; ++i) reference.NextSeed();
        EXPECT_EQ(rng.GetSeed(), reference.GetSeed()) << c.name;
    }
}

TEST(RzRandom, CopiesContinueTheSameSequence) {
    RzRandom a(987654321);
    a.Normal(0.0, 1.0);
    RzRandom b = a;
    for (int i = 0; i < 5; ++i) EXPECT_EQ(a.Random(), b.Random());
}

TEST(RzRandom, IntegerRanges) {
    RzRandom rng(2024);
    int faces[7] = {};
    for (int i = 0; i < 6000; ++i) {
        const int32_t face = rng.Equilikely(1, 6);
        ASSERT_TRUE(face >= 1 && face <= 6);
        ++faces[face];
        EXPECT_EQ(rng.Equilikely(3, 3), 3);
        EXPECT_EQ(rng.Bernoulli(0.0), 0);
        EXPECT_EQ(rng.Bernoulli(1.0), 1);
    }
    for (int f = 1; f <= 6; ++f) EXPECT_GT(faces[f], 850) << f;
    EXPECT_EQ(rng.Geometric(1.0), INT32_MIN);  // log(1) = 0: an infinite quotient
}

// Sample means, so that a wrong constant shared by the implementation and
// the reference vectors would still show.
TEST(RzRandom, SampleMeans) {
    const int n = 20000;
    const struct {
        const char* name;
        double mean, tolerance;
        std::function<double(RzRandom&)> variate;
    } cases[] = {
        {"Uniform", 3.0, 0.05, [](RzRandom& r) { return r.Uniform(2.0, 4.0); }},
        {"Exponential", 2.0, 0.06, [](RzRandom& r) { return r.Exponential(2.0); }},
        {"Normal", 10.0, 0.05, [](RzRandom& r) { return r.Normal(10.0, 2.0); }},
        {"Normal squared", 1.0, 0.04, [](RzRandom& r) { return pow(r.Normal(0.0, 1.0), 2); }},
        {"Lognormal", exp(0.5), 0.06, [](RzRandom& r) { return r.Lognormal(0.0, 1.0); }},
        {"Geometric", 1.0, 0.05, [](RzRandom& r) { return double(r.Geometric(0.5)); }},
        {"Poisson", 3.0, 0.05, [](RzRandom& r) { return double(r.Poisson(3.0)); }},
        {"Binomial", 3.0, 0.05, [](RzRandom& r) { return double(r.Binomial(10, 0.3)); }},
        {"Chisquare", 4.0, 0.08, [](RzRandom& r) { return r.Chisquare(4); }},
        {"Student", 0.0, 0.05, [](RzRandom& r) { return r.Student(5); }},
    };
    for (const auto& c : cases) {
        RzRandom rng(31415926);
        double sum = 0.0;
        for (int i = 0; i < n; ++i) sum += c.variate(rng);
        EXPECT_NEAR(sum / n, c.mean, c.tolerance) << c.name;
    }
}
