#include "Measured.h"

#include <algorithm>

namespace Benchmarks {

Spread spreadOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t count = values.size();
    const double median = (values.at((count - 1) / 2) + values.at(count / 2)) / 2;
    return {values.at(count / 4), median, values.at(count * 3 / 4)};
}

void Pairs::add(double ours, double theirs)
{
    mOurs.push_back(ours);
    mTheirs.push_back(theirs);
}

double Pairs::ours() const
{
    return spreadOf(mOurs).median;
}

double Pairs::theirs() const
{
    return spreadOf(mTheirs).median;
}

Spread Pairs::figure(Figure figure) const
{
    std::vector<double> figures;
    for (std::size_t i = 0; i < count(); ++i)
        figures.push_back(figure == Figure::Ratio ? mOurs[i] / mTheirs[i] : mOurs[i] - mTheirs[i]);
    return spreadOf(std::move(figures));
}

}  // namespace Benchmarks
