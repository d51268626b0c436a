// Checks the reference vectors of RzRandom (argument: the vector file). The
// compiler check builds this program with RzRandom.cpp alone, once per
// compiler and optimisation level.
#include <stdio.h>

#include <string>

#include "RandomVectors.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s random_vectors.txt\n", argv[0]);
        return 2;
    }
    std::string failures;
    const int checked = rzvectors::Check(argv[1], failures);
    if (checked <= 0) {
        fprintf(stderr, "cannot read vectors from %s\n", argv[1]);
        return 1;
    }
    fputs(failures.c_str(), stdout);
    printf("%d vectors, %s\n", checked, failures.empty() ? "all equal" : "MISMATCHES");
    return failures.empty() ? 0 : 1;
}
