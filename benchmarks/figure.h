#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

/// Milliseconds that `work` takes once.
template <class Work>
double milliseconds(Work&& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

/// As milliseconds(), but of the processor's time that this process takes, all its threads
/// together: what else the machine does makes no difference.
template <class Work>
double cpuMilliseconds(Work&& work)
{
    const std::clock_t start = std::clock();
    work();
    return 1000. * double(std::clock() - start) / CLOCKS_PER_SEC;
}

inline double median(std::vector<double> values)
{
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The medians of `runs` runs of two measurements that take turns, so that both meet the same
/// machine. Each gives milliseconds.
template <class First, class Second>
std::pair<double, double> medians(int runs, First&& first, Second&& second)
{
    std::vector<double> firsts;
    std::vector<double> seconds;
    for (int i = 0; i < runs; ++i) {
        firsts.push_back(first());
        seconds.push_back(second());
    }
    return {median(std::move(firsts)), median(std::move(seconds))};
}

/// The figures of one benchmark program, each a line "area/name: figure (bound) ok".
class Figures
{
public:
    explicit Figures(std::string area) : m_area(std::move(area)) {}

    /// A figure above its bound is SHORT. `unit` is empty for a ratio.
    void report(const char* name, double figure, double bound, const char* unit = "")
    {
        const bool ok = figure <= bound;
        m_ok = m_ok && ok;
        std::printf("%s/%s: %.2f%s (bound %g) %s\n", m_area.c_str(), name, figure, unit, bound,
                    ok ? "ok" : "SHORT");
        std::fflush(stdout);
    }
    /// What main() returns: 1 when a figure was short.
    int result() const { return m_ok ? 0 : 1; }

private:
    std::string m_area;
    bool m_ok = true;
};
