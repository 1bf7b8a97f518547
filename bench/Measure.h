// What the benchmark measures with: clocks, memory, medians, the text of
// its tables, and child processes of its own program.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace kavrin::bench {

using Clock = std::chrono::steady_clock;

double Microseconds(Clock::duration d);

// Processor time of the calling thread, user and system, in microseconds.
double ThreadCpuMicroseconds();

// The time one side of a case at one size has taken so far.
struct Part {
  double cpu = 0;
  double wall = 0;
  template <typename Body>
  void Time(Body&& body) {
    const double cpu_start = ThreadCpuMicroseconds();
    const auto wall_start = Clock::now();
    body();
    wall += Microseconds(Clock::now() - wall_start);
    cpu += ThreadCpuMicroseconds() - cpu_start;
  }
};

// The peak resident memory of this process's own address space, in KiB.
long PeakResidentKb();

double Median(std::vector<double> values);
std::string Fixed(double value, int decimals);
// `text` padded to `width` characters (ASCII), on the left unless `left`.
std::string Pad(const std::string& text, size_t width, bool left = false);
// The processor model and count.
std::string Machine();

// Runs this program again with `args` and waits for it; answers the exit
// status, or throws when it cannot start.
int RunChild(const std::vector<std::string>& args, long* max_rss_kb = nullptr);

}  // namespace kavrin::bench
