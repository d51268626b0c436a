// Checks RzRandom against the reference vectors (argument: the vector file,
// tests/data/random_vectors.txt, written by random_vectors_oracle.cpp): every
// variate from several seeds, the result and the state after one draw. Built
// with the library as the test RzRandom.ReferenceVectors, and by the compiler
// check with RzRandom.cpp alone, once per compiler and optimisation level.
#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <fstream>
#include <sstream>
#include <string>

#include <Rz/RzMath/RzRandom.h>

namespace {

// A vector's two arguments, read both as reals and as integers.
struct Args {
    double x, y;
    int32_t i, j;
};

// Draws the named variate once from `rng`; false for an unknown name.
bool Draw(RzRandom& rng, const std::string& name, const Args& a, double& result) {
    static const struct {
        const char* name;
        double (*draw)(RzRandom&, const Args&);
    } variates[] = {
        {"Random", [](RzRandom& r, const Args&) { return r.Random(); }},
        {"NextSeed", [](RzRandom& r, const Args&) { return double(r.NextSeed()); }},
        {"Bernoulli", [](RzRandom& r, const Args& a) { return double(r.Bernoulli(a.x)); }},
        {"Binomial", [](RzRandom& r, const Args& a) { return double(r.Binomial(a.i, a.y)); }},
        {"Equilikely", [](RzRandom& r, const Args& a) { return double(r.Equilikely(a.i, a.j)); }},
        {"Geometric", [](RzRandom& r, const Args& a) { return double(r.Geometric(a.x)); }},
        {"Pascal", [](RzRandom& r, const Args& a) { return double(r.Pascal(a.i, a.y)); }},
        {"Poisson", [](RzRandom& r, const Args& a) { return double(r.Poisson(a.x)); }},
        {"Uniform", [](RzRandom& r, const Args& a) { return r.Uniform(a.x, a.y); }},
        {"Exponential", [](RzRandom& r, const Args& a) { return r.Exponential(a.x); }},
        {"Erlang", [](RzRandom& r, const Args& a) { return r.Erlang(a.i, a.y); }},
        {"Normal", [](RzRandom& r, const Args& a) { return r.Normal(a.x, a.y); }},
        {"Lognormal", [](RzRandom& r, const Args& a) { return r.Lognormal(a.x, a.y); }},
        {"Chisquare", [](RzRandom& r, const Args& a) { return r.Chisquare(a.i); }},
        {"Student", [](RzRandom& r, const Args& a) { return r.Student(a.i); }},
    };
    for (const auto& v : variates) {
        if (name == v.name) {
            result = v.draw(rng, a);
            return true;
        }
    }
    return false;
}

}  // namespace

// Results must be equal bit for bit (zeros by sign too); any NaN matches any
// NaN, because the sign of a NaN made by 0 / 0 depends on whether the
// compiler or the processor computed it.
int main(int argc, char** argv) {
    std::ifstream in(argc == 2 ? argv[1] : "");
    if (!in) {
        fprintf(stderr, "usage: %s random_vectors.txt\n", argv[0]);
        return 2;
    }
    int checked = 0, mismatches = 0;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream fields(line);
        std::string name, a, b, expectedText;
        long long seed = 0, expectedState = 0;
        fields >> name >> seed >> a >> b >> expectedText >> expectedState;
        const Args args = {strtod(a.c_str(), nullptr), strtod(b.c_str(), nullptr),
                           static_cast<int32_t>(strtol(a.c_str(), nullptr, 10)),
                           static_cast<int32_t>(strtol(b.c_str(), nullptr, 10))};
        RzRandom rng(static_cast<int32_t>(seed));
        double result = 0.0;
        const double expected = strtod(expectedText.c_str(), nullptr);
        const bool known = Draw(rng, name, args, result);
        const bool same =
            isnan(expected) ? isnan(result) : memcmp(&result, &expected, sizeof result) == 0;
        if (!fields || !known || !same || rng.GetSeed() != expectedState) {
            printf("%s  -> got %.17g, state %ld\n", line.c_str(), result,
                   static_cast<long>(rng.GetSeed()));
            ++mismatches;
        }
        ++checked;
    }
    printf("%d vectors, %s\n", checked, mismatches ? "MISMATCHES" : "all equal");
    return checked < 500 || mismatches ? 1 : 0;
}
