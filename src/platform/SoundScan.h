#pragma once
// Reads a whole sound into its peak summary and song features. A long sound
// is read in two halves at once, the second by a decoder of its own on
// another thread from a seek point in the middle; the halves are joined only
// when the first frames of the second match, sample for sample, what the
// first decoder gives there, so the summary is the one a reading from start
// to end makes. Otherwise the first decoder simply reads on.
#include <QString>
#include <functional>

class AudioDecoder;
class PeakSummary;
class SongFeatures;

// Called on the calling thread a few times a second at least, with the
// share of the sound read so far.
using ScanStep = std::function<void(int percent)>;

// source is open at its start; peaks and features are reset for its rate
// and channels. True when the sound was read in two halves at once. Throws
// the decoder's CError.
bool ScanSound(AudioDecoder& source, const QString& path, PeakSummary& peaks, SongFeatures& features,
               const ScanStep& step);
