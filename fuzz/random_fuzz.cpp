// Every variate of RzRandom against its definition (RandomOracle.h) from any
// valid state and with any arguments: the result bit for bit (any NaN
// matches any NaN, whose sign depends on who computed it) and the state
// after the draw. The generator step against the standard library's
// minstd_rand for valid states, and for any 32-bit value a result in
// 1..2^31 - 1 congruent to 48271 x.
//
// Input: byte 0 picks the variate, bytes 1-4 the state (little-endian), then
// two arguments of 8 bytes each, read as doubles and as integers of their
// low 32 bits. Counts are cut to 16 bits and Poisson's mean to 1000 at most,
// so that every draw ends soon.
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <random>

#include <Rz/RzMath/RzRandom.h>

#include "RandomOracle.h"

namespace {

void Check(bool ok) {
    if (!ok) abort();
}

template <class T>
T Take(const uint8_t*& p, const uint8_t* end) {
    T v = 0;
    uint8_t bytes[sizeof(T)] = {};
    for (size_t i = 0; i < sizeof(T) && p < end; ++i) bytes[i] = *p++;
    memcpy(&v, bytes, sizeof(T));
    return v;
}

bool Same(double a, double b) {
    return isnan(a) ? isnan(b) : memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const uint8_t* p = data;
    const uint8_t* const end = data + size;
    const int variate = Take<uint8_t>(p, end) % 15;
    const int32_t x = Take<int32_t>(p, end);
    const uint64_t a = Take<uint64_t>(p, end), b = Take<uint64_t>(p, end);
    double ra, rb;
    memcpy(&ra, &a, sizeof ra);
    memcpy(&rb, &b, sizeof rb);
    const int32_t ia = static_cast<int32_t>(a), ib = static_cast<int32_t>(b);
    const int32_t n = static_cast<int16_t>(ia);

    // The generator step.
    const int64_t next = RzRandom::Random(x);
    Check(next >= 1 && next <= rzoracle::kModulus);
    Check((next - 48271 * int64_t(x)) % rzoracle::kModulus == 0);
    const int32_t state = static_cast<int32_t>(uint32_t(x) % (rzoracle::kModulus - 1) + 1);
    std::minstd_rand reference(static_cast<std::minstd_rand::result_type>(state));
    Check(RzRandom::Random(state) == int32_t(reference()));

    // One variate from a valid state.
    RzRandom rng(state);
    rzoracle::Oracle oracle{state};
    double got = 0, expected = 0;
    switch (variate) {
        case 0:
            got = rng.Random(), expected = oracle.Uniform01();
            break;
        case 1:
            got = rng.NextSeed(), expected = (oracle.Uniform01(), double(oracle.state));
            break;
        case 2:
            got = rng.Bernoulli(ra), expected = double(oracle.Bernoulli(ra));
            break;
        case 3:
            got = rng.Binomial(n, rb), expected = double(oracle.Binomial(n, rb));
            break;
        case 4:
            got = rng.Equilikely(ia, ib), expected = double(oracle.Equilikely(ia, ib));
            break;
        case 5:
            got = rng.Geometric(ra), expected = double(oracle.Geometric(ra));
            break;
        case 6:
            got = rng.Pascal(n, rb), expected = double(oracle.Pascal(n, rb));
            break;
        case 7: {
            const double m = ra <= 1000 ? ra : fmod(fabs(ra), 1000);
            got = rng.Poisson(m), expected = double(oracle.Poisson(m));
            break;
        }
        case 8:
            got = rng.Uniform(ra, rb), expected = oracle.Uniform(ra, rb);
            break;
        case 9:
            got = rng.Exponential(ra), expected = oracle.Exponential(ra);
            break;
        case 10:
            got = rng.Erlang(n, rb), expected = oracle.Erlang(n, rb);
            break;
        case 11:
            got = rng.Normal(ra, rb), expected = oracle.Normal(ra, rb);
            break;
        case 12:
            got = rng.Lognormal(ra, rb), expected = oracle.Lognormal(ra, rb);
            break;
        case 13:
            got = rng.Chisquare(n), expected = oracle.Chisquare(n);
            break;
        default:
            got = rng.Student(n), expected = oracle.Student(n);
            break;
    }
    Check(Same(got, expected) && rng.GetSeed() == oracle.state);
    return 0;
}
