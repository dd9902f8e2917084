#pragma once
// Where a sound passes through silence: a cut there starts and ends without
// a click.
#include <cstdint>
#include <span>

// The index of the zero crossing nearest to centre in a run of one-channel
// samples: of the two samples around a change of sign, the one nearer to
// zero; a sample of exactly zero is one too. -1 when the run has none.
int NearestZeroCrossing(std::span<const int32_t> samples, int centre);
