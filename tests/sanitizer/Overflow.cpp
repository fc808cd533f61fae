// Overflows a signed addition on purpose. In the sanitizer build the report
// must end the program with a failure, so that no report of undefined
// behaviour can pass a test run unnoticed; a program that survives it
// returns 0 and its test fails.
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    const int big = argc > 1 ? std::atoi(argv[1]) : 0;
    volatile int sum = big;
    sum = sum + 1;
    std::printf("survived: %d\n", static_cast<int>(sum));
    return 0;
}
