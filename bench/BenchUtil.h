#pragma once

// Shared by the benchmark programs: timing by the median of several runs, and
// the one-line result format
//   NAME ratio=R ours_ms=A reference_ms=B

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include <malloc.h>

namespace bench {

// Keeps the compiler from dropping a computation whose result is unused.
template<class T>
inline void keep(const T& value)
{
    asm volatile("" : : "g"(&value) : "memory");
}

inline double median(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// Milliseconds one call of the function takes.
template<class Function>
double timeMs(Function&& function)
{
    const auto start = std::chrono::steady_clock::now();
    function();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// Median milliseconds of runs calls.
template<class Function>
double medianMs(int runs, Function&& function)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i)
        times.push_back(timeMs(function));
    return median(times);
}

inline void printResult(const char* name, double oursMs, double referenceMs)
{
    std::printf("%s ratio=%.3f ours_ms=%.3f reference_ms=%.3f\n", name,
                referenceMs > 0 ? oursMs / referenceMs : 0.0, oursMs, referenceMs);
    std::fflush(stdout);
}

// Times ours and the reference alternately, runs times each, so that both see
// the same machine load, and prints the medians. prepare() runs untimed
// before every timed call. The heap is tidied untimed as well: otherwise the
// first large allocation of one side pays for merging the small blocks the
// other side freed just before.
template<class Prepare, class Ours, class Reference>
void compare(const char* name, int runs, Prepare&& prepare, Ours&& ours, Reference&& reference)
{
    std::vector<double> oursTimes;
    std::vector<double> referenceTimes;
    for (int i = 0; i < runs; ++i) {
        prepare();
        malloc_trim(0);
        oursTimes.push_back(timeMs(ours));
        prepare();
        malloc_trim(0);
        referenceTimes.push_back(timeMs(reference));
    }
    printResult(name, median(oursTimes), median(referenceTimes));
}

template<class Ours, class Reference>
void compare(const char* name, int runs, Ours&& ours, Reference&& reference)
{
    compare(name, runs, [] {}, ours, reference);
}

} // namespace bench
