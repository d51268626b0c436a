#include <Rz/RzMath/RzRandom.h>

#include <math.h>
#include <time.h>

// The variates must come out the same bit for bit wherever they are built:
// this unit is compiled without contracting a * b + c into one fused
// operation (-ffp-contract=off), and never with fast-math.
#if defined(__FAST_MATH__)
#error "RzRandom must be built without fast-math: its results are reproducible bit for bit"
#endif

// Counts RandomSeed calls; only RandomSeed changes it.
int32_t RzRandom::m_seedoffset = 0;

namespace {

const int32_t kModulus = 2147483647;  // 2^31 - 1
const int32_t kMultiplier = 48271;
const int32_t kQuotient = 44488;  // kModulus / kMultiplier
const int32_t kRemainder = 3399;  // kModulus % kMultiplier

// |x| modulo the modulus; |-2^31| is 2^31, which leaves 1.
int32_t Reduce(int32_t x) {
    const int64_t magnitude = x < 0 ? -static_cast<int64_t>(x) : x;
    return static_cast<int32_t>(magnitude % kModulus);
}

// 32-bit wrap-around, as the 32-bit target's integer arithmetic.
int32_t Wrap(uint32_t v) {
    return static_cast<int32_t>(v);
}

// Truncation toward zero as the 32-bit target's conversion gives it: a value
// whose truncation does not fit (infinities and NaN included) becomes
// -2147483648 instead of being undefined.
int32_t Truncate(double v) {
    if (v > -2147483649.0 && v < 2147483648.0) return static_cast<int32_t>(v);
    return INT32_MIN;
}

}  // namespace

void RzRandom::SetSeed(int32_t x) {
    seed = Reduce(x);
}

void RzRandom::RandomSeed() {
    m_seedoffset = Wrap(static_cast<uint32_t>(m_seedoffset) + 1u);
    seed = Random(Reduce(m_seedoffset));
    seed = Wrap(static_cast<uint32_t>(seed) + static_cast<uint32_t>(time(nullptr)));
    seed = Reduce(seed);
}

// Schrage: with m = a q + r and r < q, a (x mod q) - r (x div q) is a x mod m
// up to one multiple of m, and both products stay below 2^31.
int32_t RzRandom::Random(int32_t x) {
    int32_t t = kMultiplier * (x % kQuotient) - kRemainder * (x / kQuotient);
    if (t <= 0) t += kModulus;
    return t;
}

int32_t RzRandom::NextSeed() {
    seed = Random(seed);
    return seed;
}

double RzRandom::Random() {
    seed = Random(seed);
    return seed / 2147483647.0;
}

int32_t RzRandom::Bernoulli(double p) {
    return Random() < 1.0 - p ? 0 : 1;
}

int32_t RzRandom::Binomial(int32_t n, double p) {
    int32_t x = 0;
    for (int32_t i = 0; i < n; ++i) x += Random() < 1.0 - p ? 0 : 1;
    return x;
}

int32_t RzRandom::Equilikely(int32_t a, int32_t b) {
    const int32_t span = Wrap(static_cast<uint32_t>(b) - static_cast<uint32_t>(a) + 1u);
    return Wrap(static_cast<uint32_t>(a) + static_cast<uint32_t>(Truncate(span * Random())));
}

int32_t RzRandom::Geometric(double p) {
    return Truncate(log(1.0 - Random()) / log(p));
}

int32_t RzRandom::Pascal(int32_t n, double p) {
    uint32_t x = 0;
    for (int32_t i = 0; i < n; ++i) x += static_cast<uint32_t>(Geometric(p));
    return Wrap(x);
}

int32_t RzRandom::Poisson(double m) {
    if (!(m > 0.0)) return 0;
    int32_t x = 0;
    double t = 0.0;
    while (m > t) {
        ++x;
        t += Exponential(1.0);
    }
    return x - 1;
}

double RzRandom::Uniform(double a, double b) {
    return a + (b - a) * Random();
}

double RzRandom::Exponential(double m) {
    return -m * log(1.0 - Random());
}

double RzRandom::Erlang(int32_t n, double b) {
    double x = 0.0;
    for (int32_t i = 0; i < n; ++i) x += Exponential(b);
    return x;
}

// Odeh and Evans (1974): a rational approximation to the inverse of the
// standard normal distribution, applied to one uniform.
double RzRandom::Normal(double m, double s) {
    const double p0 = 0.322232431088, q0 = 0.099348462606;
    const double p1 = 1.0, q1 = 0.588581570495;
    const double p2 = 0.342242088547, q2 = 0.531103462366;
    const double p3 = 0.204231210245e-1, q3 = 0.103537752850;
    const double p4 = 0.453642210148e-4, q4 = 0.385607006340e-2;
    const double u = Random();
    const double t = u < 0.5 ? sqrt(-2.0 * log(u)) : sqrt(-2.0 * log(1.0 - u));
    const double p = p0 + t * (p1 + t * (p2 + t * (p3 + t * p4)));
    const double q = q0 + t * (q1 + t * (q2 + t * (q3 + t * q4)));
    const double z = u < 0.5 ? p / q - t : t - p / q;
    return m + s * z;
}

double RzRandom::Lognormal(double a, double b) {
    return exp(a + b * Normal(0.0, 1.0));
}

double RzRandom::Chisquare(int32_t n) {
    double x = 0.0;
    for (int32_t i = 0; i < n; ++i) {
        const double z = Normal(0.0, 1.0);
        x += z * z;
    }
    return x;
}

double RzRandom::Student(int32_t n) {
    const double z = Normal(0.0, 1.0);  // drawn before the others
    return z / sqrt(Chisquare(n) / n);
}
