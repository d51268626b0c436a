// RzRandom: reproducible pseudo-random numbers.
//
// One 32-bit state per object, advanced by the multiplicative (Lehmer)
// generator with modulus 2^31 - 1 and multiplier 48271, computed without
// overflow by Schrage's method, and on top of it thirteen random variates of
// the classic discrete-event-simulation library, with their names,
// parameters and methods. A given seed gives the same numbers on every
// machine, compiler and release: the integer arithmetic, the order in which
// each variate draws, and every floating-point operation are fixed.
//
// An object is a value: a copy continues the same sequence. Objects belong to
// one thread at a time; RandomSeed also changes the shared m_seedoffset
// without a lock. Nothing is validated and nothing raises.
#ifndef RZ_RZMATH_RZRANDOM_H
#define RZ_RZMATH_RZRANDOM_H

#include <stdint.h>

#include <Rz/RzCore/RzExport.h>

class RZ_API RzRandom {
public:
    // Stores `seed` as the state, unchecked. A valid state is 1..2147483646;
    // use SetSeed for any other value.
    RzRandom(int32_t initial) : seed(initial) {}

    // The state becomes |x| modulo 2147483647 (|-2147483648| counting as
    // 2^31). 0 and 2147483647 give the state 0, from which the generator
    // stays at 2147483647 for ever (Random() returns 1.0): do not seed with a
    // multiple of the modulus.
    void SetSeed(int32_t x);
    int32_t GetSeed() const { return seed; }
    // Seeds from the clock: m_seedoffset goes up by one, the state becomes
    // one generator step of it (reduced as by SetSeed) plus time(NULL) in 32
    // bits, reduced again. Generators seeded within the same second differ.
    void RandomSeed();

    // One generator step: 48271 x mod 2147483647 for x in 1..2147483646, in
    // 32-bit arithmetic that never overflows (for any x).
    static int32_t Random(int32_t x);
    // Advances the state one step and returns it.
    int32_t NextSeed();
    // Advances the state one step and returns state / 2147483647.0: strictly
    // between 0 and 1 for every valid state.
    double Random();

    // --- Variates ---------------------------------------------------------------
    //
    // Each draws from Random() in the order given. Counts n below 1 give the
    // empty sum. Conversions of a real to int32_t truncate toward zero; one
    // that is infinite, NaN or out of range gives -2147483648. Integer sums
    // wrap at 32 bits.

    // 0 if Random() < 1 - p, else 1.
    int32_t Bernoulli(double p);
    // The sum of n Bernoulli(p).
    int32_t Binomial(int32_t n, double p);
    // a + (int32_t)((b - a + 1) * Random()), with b - a + 1 in 32 bits: a..b.
    int32_t Equilikely(int32_t a, int32_t b);
    // (int32_t)(log(1 - Random()) / log(p)): 0, 1, ... (p = 1 divides by
    // zero and gives -2147483648; p = 0 divides by -infinity and gives 0).
    int32_t Geometric(double p);
    // The sum of n Geometric(p).
    int32_t Pascal(int32_t n, double p);
    // Draws Exponential(1.0) until their sum reaches m and returns the number
    // of draws less one. 0 without drawing when m is not above 0 (or NaN).
    int32_t Poisson(double m);
    // a + (b - a) * Random().
    double Uniform(double a, double b);
    // -m * log(1 - Random()).
    double Exponential(double m);
    // The sum of n Exponential(b).
    double Erlang(int32_t n, double b);
    // m + s * z, z the standard normal deviate of one Random() by Odeh and
    // Evans' rational approximation (no second value is kept back).
    double Normal(double m, double s);
    // exp(a + b * Normal(0.0, 1.0)).
    double Lognormal(double a, double b);
    // The sum of the squares of n Normal(0.0, 1.0).
    double Chisquare(int32_t n);
    // z / sqrt(c / n): z = Normal(0.0, 1.0) drawn first, then c =
    // Chisquare(n). n = 0 gives NaN.
    double Student(int32_t n);

    // The number of RandomSeed calls in this process so far (wrapping at 32
    // bits); shared by all objects.
    static int32_t m_seedoffset;

private:
    int32_t seed;
};

#endif
