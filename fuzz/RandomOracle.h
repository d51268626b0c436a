// RzRandom's generator and variates computed straight from their
// definitions, independently of the library: the generator step is
// 48271 x mod (2^31 - 1) in 64-bit arithmetic rather than Schrage's method,
// and sums that the 32-bit target wraps are wrapped explicitly. The random
// fuzz target checks the library against it; tests/data/random_vectors_oracle.cpp
// writes the reference vectors with it.
#ifndef RZ_FUZZ_RANDOMORACLE_H
#define RZ_FUZZ_RANDOMORACLE_H

#include <math.h>
#include <stdint.h>

namespace rzoracle {

const int64_t kModulus = 2147483647;

// The 32-bit target's truncating conversion: -2^31 when the truncated value
// does not fit, NaN and infinities included.
inline int64_t ToInt32(double v) {
    const double t = trunc(v);
    if (!(t >= -2147483648.0 && t <= 2147483647.0)) return -2147483648LL;
    return static_cast<int64_t>(t);
}

// 32-bit two's complement wrap-around of an exact integer.
inline int64_t Wrap32(int64_t v) {
    int64_t r = ((v % 4294967296LL) + 4294967296LL) % 4294967296LL;
    return r >= 2147483648LL ? r - 4294967296LL : r;
}

// One generator and the variates drawn from it; `state` is the generator's.
struct Oracle {
    int64_t state;

    double Uniform01() {
        state = 48271 * state % kModulus;
        return static_cast<double>(state) / static_cast<double>(kModulus);
    }
    int64_t Bernoulli(double p) { return Uniform01() < 1.0 - p ? 0 : 1; }
    int64_t Binomial(int64_t n, double p) {
        int64_t x = 0;
        for (int64_t i = 0; i < n; ++i) x += Uniform01() < 1.0 - p ? 0 : 1;
        return x;
    }
    int64_t Equilikely(int64_t a, int64_t b) {
        const int64_t span = Wrap32(b - a + 1);
        return Wrap32(a + ToInt32(static_cast<double>(span) * Uniform01()));
    }
    int64_t Geometric(double p) { return ToInt32(log(1.0 - Uniform01()) / log(p)); }
    int64_t Pascal(int64_t n, double p) {
        int64_t x = 0;
        for (int64_t i = 0; i < n; ++i) x = Wrap32(x + Geometric(p));
        return x;
    }
    double Exponential(double m) { return -m * log(1.0 - Uniform01()); }
    int64_t Poisson(double m) {
        if (!(m > 0.0)) return 0;
        int64_t x = 0;
        double t = 0.0;
        while (m > t) {
            x += 1;
            t += Exponential(1.0);
        }
        return x - 1;
    }
    double Uniform(double a, double b) { return a + (b - a) * Uniform01(); }
    double Erlang(int64_t n, double b) {
        double x = 0.0;
        for (int64_t i = 0; i < n; ++i) x += Exponential(b);
        return x;
    }
    double Normal(double m, double s) {
        const double u = Uniform01();
        const double t = u < 0.5 ? sqrt(-2.0 * log(u)) : sqrt(-2.0 * log(1.0 - u));
        const double p =
            ((((4.53642210148e-5 * t + 0.0204231210245) * t + 0.342242088547) * t + 1.0) * t +
             0.322232431088);
        const double q =
            ((((0.0038560700634 * t + 0.10353775285) * t + 0.531103462366) * t + 0.588581570495) *
                 t +
             0.099348462606);
        const double z = u < 0.5 ? p / q - t : t - p / q;
        return z * s + m;
    }
    double Lognormal(double a, double b) { return exp(a + b * Normal(0.0, 1.0)); }
    double Chisquare(int64_t n) {
        double x = 0.0;
        for (int64_t i = 0; i < n; ++i) {
            const double z = Normal(0.0, 1.0);
            x += z * z;
        }
        return x;
    }
    double Student(int64_t n) {
        const double z = Normal(0.0, 1.0);
        const double c = Chisquare(n);
        return z / sqrt(c / static_cast<double>(n));
    }
};

}  // namespace rzoracle

#endif
