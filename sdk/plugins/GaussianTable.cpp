#include "GaussianTable.h"

#include <algorithm>
#include <cmath>
#include <utility>

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
    buildSequence();
}

void GaussianTable::buildSequence()
{
    // Every quantile equally often, in an order shuffled by a fixed seed: the same sequence in every run.
    m_sequence.resize(SequenceStarts + MaxRun);
    for (std::size_t i = 0; i < SequenceStarts; ++i)
        m_sequence[i] = m_values[i % m_values.size()];
    FastRandom shuffle(0x2545f491u);
    for (std::size_t i = SequenceStarts - 1; i > 0; --i)
        std::swap(m_sequence[i], m_sequence[shuffle.next() % (i + 1)]);
    std::copy(m_sequence.begin(), m_sequence.begin() + MaxRun, m_sequence.begin() + SequenceStarts);
}

const GaussianTable& GaussianTable::instance()
{
    static const GaussianTable table;
    return table;
}

} // namespace Zerlane::sim
