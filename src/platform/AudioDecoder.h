#pragma once
// Decodes any sound FFmpeg opens to interleaved signed 16-bit frames at the
// file's own rate, with at most two channels. Positions count frames from the
// first audible sample, so that what the editor shows, plays and cuts agree.
#include <QString>
#include <cstdint>
#include <memory>

// The longest sound a file of this many bytes can plausibly hold. Readers
// end a sound there, and a header that claims more is not believed.
double PlausibleSeconds(int64_t fileBytes);

class AudioDecoder {
public:
    AudioDecoder();
    ~AudioDecoder();
    AudioDecoder(const AudioDecoder&) = delete;
    AudioDecoder& operator=(const AudioDecoder&) = delete;

    // Throws CError: kFormatNotSupported when the file holds no audio
    // stream FFmpeg can decode, or one at a rate no sound card plays; kFileEmptyOrDamaged for a file of no bytes, or
    // one whose frames turn out undecodable one after another; "File not
    // found" for a missing file. A file whose stream holds no decodable frame
    // opens and reads as empty.
    void Open(const QString& path);
    void Close();
    bool IsOpen() const;

    int SampleRate() const;
    int Channels() const;
    // From the container, at most PlausibleSeconds of the file; 0 when unknown.
    double DurationSeconds() const;
    int ProgressPercent() const;     // share of the file's bytes read so far

    // Up to maxFrames frames into out (maxFrames * Channels() values); 0 at
    // the end, or at PlausibleSeconds of the file, whichever comes first.
    int Read(int16_t* out, int maxFrames);
    // The next Read starts at this frame. A file that cannot seek is read
    // again from its start up to the frame.
    void Seek(int64_t frame);
    int64_t Position() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
