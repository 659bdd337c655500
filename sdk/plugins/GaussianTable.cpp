#include "GaussianTable.h"

#include <cmath>

namespace Zerlane::sim {

namespace {

// Inverse of the standard normal distribution function by bisection on erfc: only run once.
double normalQuantile(double p)
{
    double lo = -8.0, hi = 8.0;
    for (int i = 0; i < 80; ++i) {
        const double mid = 0.5 * (lo + hi);
        const double cdf = 0.5 * std::erfc(-mid / std::sqrt(2.0));
        (cdf < p ? lo : hi) = mid;
    }
    return 0.5 * (lo + hi);
}

} // namespace

GaussianTable::GaussianTable()
{
    const int n = int(m_values.size());
    for (int i = 0; i < n; ++i)
        m_values[i] = float(normalQuantile((i + 0.5) / n));
}

const GaussianTable& GaussianTable::instance()
{
    static const GaussianTable table;
    return table;
}

} // namespace Zerlane::sim
