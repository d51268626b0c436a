#include "RzToolValues.h"

#include <string.h>

#include <ostream>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzCore/RzString.h>
#include <Rz/RzMath/RzRandom.h>
#include <Rz/RzSystem/RzDate.h>
#include <Rz/RzSystem/RzSystem.h>

namespace {

// A variate: its parameters ("i" a whole number, "r" a real, named by
// `names`), whether it gives whole numbers, and one draw.
struct Variate {
    const char* name;
    const char* kinds;
    const char* names;
    bool whole;
    double (*draw)(RzRandom& r, const int32_t* i, const double* x);
};

const Variate kVariates[] = {
    {"bernoulli", "r", "P", true,
     [](RzRandom& r, const int32_t*, const double* x) -> double { return r.Bernoulli(x[0]); }},
    {"binomial", "ir", "N P", true,
     [](RzRandom& r, const int32_t* i, const double* x) -> double {
         return r.Binomial(i[0], x[1]);
     }},
    {"equilikely", "ii", "A B", true,
     [](RzRandom& r, const int32_t* i, const double*) -> double {
         return r.Equilikely(i[0], i[1]);
     }},
    {"geometric", "r", "P", true,
     [](RzRandom& r, const int32_t*, const double* x) -> double { return r.Geometric(x[0]); }},
    {"pascal", "ir", "N P", true,
     [](RzRandom& r, const int32_t* i, const double* x) -> double { return r.Pascal(i[0], x[1]); }},
    {"poisson", "r", "M", true,
     [](RzRandom& r, const int32_t*, const double* x) -> double { return r.Poisson(x[0]); }},
    {"uniform", "rr", "A B", false,
     [](RzRandom& r, const int32_t*, const double* x) { return r.Uniform(x[0], x[1]); }},
    {"exponential", "r", "M", false,
     [](RzRandom& r, const int32_t*, const double* x) { return r.Exponential(x[0]); }},
    {"erlang", "ir", "N B", false,
     [](RzRandom& r, const int32_t* i, const double* x) { return r.Erlang(i[0], x[1]); }},
    {"normal", "rr", "M S", false,
     [](RzRandom& r, const int32_t*, const double* x) { return r.Normal(x[0], x[1]); }},
    {"lognormal", "rr", "A B", false,
     [](RzRandom& r, const int32_t*, const double* x) { return r.Lognormal(x[0], x[1]); }},
    {"chisquare", "i", "N", false,
     [](RzRandom& r, const int32_t* i, const double*) { return r.Chisquare(i[0]); }},
    {"student", "i", "N", false,
     [](RzRandom& r, const int32_t* i, const double*) { return r.Student(i[0]); }},
};

}  // namespace

int RzToolRandom(const std::vector<std::string>& args, RzToolIO& io) {
    const RzToolArgs a(args, {{"--seed", true}, {"-n", true}});
    a.ExpectOperands(1, 3, "VARIATE");
    const std::vector<std::string>& words = a.Operands();
    const Variate* v = nullptr;
    for (const Variate& candidate : kVariates)
        if (words[0] == candidate.name) v = &candidate;
    if (!v) throw RzToolUsageError("no variate '" + words[0] + "'");
    const size_t count = strlen(v->kinds);
    if (words.size() != count + 1)
        throw RzToolUsageError(std::string(v->name) + " takes " + v->names);
    int32_t whole[2] = {0, 0};
    double real[2] = {0, 0};
    const std::string names = v->names;
    for (size_t k = 0; k < count; ++k) {
        const std::string what = names.substr(2 * k, 1);
        if (v->kinds[k] == 'i')
            whole[k] = RzToolInt(words[k + 1], what.c_str());
        else
            real[k] = RzToolReal(words[k + 1], what.c_str());
    }
    const int32_t n = RzToolInt(a.Value("-n", "1"), "-n");
    if (n < 0) throw RzToolUsageError("-n must be 0 or more");

    RzRandom random(1);
    if (a.Has("--seed")) {
        random.SetSeed(RzToolInt(a.Value("--seed"), "--seed"));
        if (random.GetSeed() == 0)
            throw RzToolUsageError("a seed that is a multiple of 2147483647 gives only 1.0");
    } else {
        random.RandomSeed();
        io.err << "rz: random: seeded from the clock; --seed " << random.GetSeed()
               << " gives the same numbers\n";
    }
    std::string text;
    for (int32_t k = 0; k < n; ++k) {
        const double x = v->draw(random, whole, real);
        text += v->whole ? std::to_string(static_cast<int32_t>(x)) : RzToolRealText(x);
        text += '\n';
        if (text.size() >= 65536) io.out << text, text.clear();
    }
    io.out << text;
    return kRzToolDone;
}

int RzToolDate(const std::vector<std::string>& args, RzToolIO& io) {
    const RzToolArgs a(args, {{"--short", false}});
    a.ExpectOperands(0, 1, "TEXT");
    const bool compact = a.Has("--short");
    if (compact && a.Operands().empty()) throw RzToolUsageError("--short needs TEXT");
    RzDate date(0, 1, 1, 0, 0, 0);
    if (a.Operands().empty()) {
        date = RzSystem::GetDate();
    } else {
        const std::string& word = a.Operands()[0];
        const RzString text(word.data(), static_cast<int32_t>(word.size()), false);
        try {
            compact ? date.SetShortString(text) : date.SetString(text);
        } catch (const RzError& e) {
            throw RzToolFailure("'" + word + "' does not read as a date: " + RzToolErrorText(e) +
                                (!compact && word.size() == 6
                                     ? " (for the six-character form, give --short)"
                                     : ""));
        }
    }
    io.out << "date: " << date.GetString().c_str() << '\n'
           << "day: " << date.GetDayString().c_str() << '\n'
           << "file name: " << date.GetFileNameString().c_str() << '\n'
           << "short: " << date.GetShortString().c_str() << '\n'
           << "day number: " << date.Day2Long() << '\n'
           << "second of day: " << date.SecondOfDay() << '\n';
    return kRzToolDone;
}
