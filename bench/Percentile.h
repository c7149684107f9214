#pragma once

#include <algorithm>
#include <cstdio>
#include <vector>

namespace corvalent::bench {

// The value below which the share `p` (0 to 1) of the samples lie, the nearest sample taken.
inline double percentile(std::vector<double> values, double p)
{
    std::sort(values.begin(), values.end());
    return values.at(std::min(values.size() - 1, size_t(p * double(values.size() - 1) + 0.5)));
}

// One line of figures under a title: median, p10, p90 and max of the samples in milliseconds.
inline void report(const char* what, const std::vector<double>& ms)
{
    std::printf("%s\n  median %.2f ms   p10 %.2f ms   p90 %.2f ms   max %.2f ms\n", what, percentile(ms, 0.5),
                percentile(ms, 0.1), percentile(ms, 0.9), percentile(ms, 1.0));
}

} // namespace corvalent::bench
