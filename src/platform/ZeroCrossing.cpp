#include "platform/ZeroCrossing.h"

#include <cstdlib>

int NearestZeroCrossing(std::span<const int32_t> samples, int centre)
{
    const int n = static_cast<int>(samples.size());
    const auto crossingAt = [&](int i) {
        if (i < 0 || i >= n)
            return false;
        if (samples[i] == 0)
            return true;
        // i is the quieter side of a change of sign with a neighbour.
        for (const int j : {i - 1, i + 1}) {
            if (j >= 0 && j < n && (samples[j] < 0) != (samples[i] < 0) && std::abs(samples[i]) <= std::abs(samples[j]))
                return true;
        }
        return false;
    };
    for (int distance = 0; distance < n; ++distance) {
        if (crossingAt(centre - distance))
            return centre - distance;
        if (crossingAt(centre + distance))
            return centre + distance;
    }
    return -1;
}
