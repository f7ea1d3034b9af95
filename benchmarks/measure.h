#ifndef LUMO25D_BENCHMARKS_MEASURE_H
#define LUMO25D_BENCHMARKS_MEASURE_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace benchmarks
{

/// Times of this process in seconds: on the clock, in user mode, in the kernel.
struct Times
{
    double wall = 0.0;
    double user = 0.0;
    double system = 0.0;

    static Times now();
    Times operator-(const Times& other) const { return {wall - other.wall, user - other.user, system - other.system}; }
    /// Adds the nth part of other.
    void add(const Times& other, double n)
    {
        wall += other.wall / n;
        user += other.user / n;
        system += other.system / n;
    }
};

/// What one measurement tells. Plain data: it comes through a pipe.
struct Measurement
{
    Times work;                 ///< what the case is about
    Times destruction;          ///< of the structure, apart from that
    double heapBytes = 0.0;     ///< held by the structure when the work was done
    double peakBytes = 0.0;     ///< resident memory at its peak, above that before the work
    unsigned long long sum = 0; ///< a number that all programs must agree about
};

/// Bytes in use on the heap, 0 where the C library doesn't tell.
double heapInUse();
/// Resident memory of the process at present and at its peak, 0 where the system doesn't tell.
double residentNow();
double residentPeak();

/// Builds a structure: build() gives its owner, e.g. a unique_ptr, sum(structure) is the number to compare. With
/// repetitions above 1, several are built and destroyed one after another, and the times are those of one on average: a
/// small input alone would be over before the clock has moved. Memory is that of the first.
template <class Build, class Sum>
Measurement measureRepeated(Build&& build, Sum&& sum, std::size_t repetitions)
{
    Measurement m;
    for (std::size_t i = 0; i < repetitions; ++i) {
        const double heapBefore = heapInUse();
        const double residentBefore = residentNow();
        const Times start = Times::now();
        auto pStructure = build();
        const Times end = Times::now();
        m.work.add(end - start, static_cast<double>(repetitions));
        if (i == 0) {
            m.heapBytes = heapInUse() - heapBefore;
            m.peakBytes = residentPeak() - residentBefore;
            m.sum = sum(*pStructure);
        }
        const Times startOfEnd = Times::now();
        pStructure.reset();
        m.destruction.add(Times::now() - startOfEnd, static_cast<double>(repetitions));
    }
    return m;
}

/// Times work() on a structure that stands, which returns the number to compare.
template <class Work>
Measurement measureWork(Work&& work)
{
    Measurement m;
    const Times start = Times::now();
    m.sum = work();
    m.work = Times::now() - start;
    return m;
}

/// Touches that much memory and gives it back at once. A virtual machine may have returned free memory to its host, and
/// would spend more time on getting it again than the work takes; this way it has it at hand.
void settleMemory(std::size_t numBytes);

/// Of an even number of values, the upper one of the two in the middle. v must not be empty.
double median(std::vector<double> v);

/// The number behind a word of the command line, at least 1, e.g. 5 for "--rounds 5".
std::size_t option(int argc, char** argv, const char* name, std::size_t byDefault);

/// Adds a row to the table of all comparisons: the file that the environment variable LUMO25D_FIGURES names, if it does.
/// The program's own name is the first column.
void addFigure(const std::string& caseName, double ourSeconds, const std::string& peer, double peerSeconds);

/// Runs f in a child process, so that no measurement inherits the heap of another, and returns what it measured. Ends
/// the program with a message when the child fails.
Measurement inChild(const std::function<Measurement()>& f);

} // namespace benchmarks

#endif
