#include <benchmark/benchmark.h>

#include <exception>
#include <iostream>

/// Runs the benchmarks that the arguments ask for. Returns 1 where one of them throws, and where there is none: a program
/// that measured nothing has failed.
int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    try {
        if (benchmark::RunSpecifiedBenchmarks() == 0) {
            std::cerr << argv[0] << ": no benchmark ran\n";
            return 1;
        }
    } catch (const std::exception& failure) {
        std::cerr << argv[0] << ": " << failure.what() << '\n';
        return 1;
    }
    benchmark::Shutdown();
    return 0;
}
