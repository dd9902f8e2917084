#pragma once
// Whole-number conversions from floating point round to the nearest, a tie
// going to the even neighbour (2.5 gives 2, 3.5 gives 4).
#include <cmath>
#include <cstdint>

inline int32_t RoundToEven(double value)
{
    return static_cast<int32_t>(std::nearbyint(value));
}
