#pragma once

#include <algorithm>
#include <vector>

namespace corvalent::bench {

// The value below which the share `p` (0 to 1) of the samples lie, the nearest sample taken.
inline double percentile(std::vector<double> values, double p)
{
    std::sort(values.begin(), values.end());
    return values.at(std::min(values.size() - 1, size_t(p * double(values.size() - 1) + 0.5)));
}

} // namespace corvalent::bench
