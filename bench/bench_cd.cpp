// The rip: a 4-minute track from a disc image read with paranoia and encoded
// to MP3 by the grabber, against cd-paranoia reading the same track to a wave
// file followed by ffmpeg encoding it at the same bit rate and LAME setting.
#include "Bench.h"
#include "platform/CDSource.h"
#include "platform/NCTAudioCDGrabber2.h"

#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace {
bool run(const QString& program, const QStringList& arguments)
{
    QProcess p;
    p.start(program, arguments);
    return p.waitForFinished(600000) && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
}

// Pink noise is as hard to encode as music; 240 s is 18000 whole sectors.
struct Disc {
    QTemporaryDir dir;
    QString cue = dir.filePath("disc.cue");

    Disc()
    {
        run("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i", "anoisesrc=d=240:c=pink:a=0.3:r=44100", "-ac", "2",
                       "-f", "s16le", dir.filePath("disc.bin")});
        QFile sheet(cue);
        sheet.open(QIODevice::WriteOnly);
        sheet.write("FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n");
    }
};

Disc& disc()
{
    static Disc made;
    return made;
}

void ripOnce()
{
    SetCDImage(disc().cue);
    NCTAudioCDGrabber2 grabber;
    grabber.Open();
    grabber.SelectSession(0);
    grabber.SelectTrack(0);
    QEventLoop wait;
    QObject::connect(&grabber, &NCTAudioCDGrabber2::OperationProgress, &wait, [&](double progress) {
        if (progress == 100.0)
            wait.quit();
    });
    grabber.RipToFile(disc().dir.filePath("ours.mp3"));
    wait.exec();
    SetCDImage({});
}

void toolsOnce()
{
    const QString wave = disc().dir.filePath("theirs.wav");
    run("cd-paranoia", {"-q", "-d", disc().cue, "1", wave});
    // 7 is the LAME setting the program's encoder uses.
    run("ffmpeg", {"-v", "error", "-y", "-i", wave, "-c:a", "libmp3lame", "-b:a", QString::number(kRipBitRate / 1000) + "k",
                   "-compression_level", "7", disc().dir.filePath("theirs.mp3")});
}

const bool ripRegistered = RegisterBench("CD_Rip4MinTrack", [] {
    return BenchFigure{MedianMilliseconds(3, ripOnce), "ms"};
});

const bool ratioRegistered = RegisterBench("CD_Rip4MinTrack_VsCdParanoiaFfmpeg", [] {
    const double ours = MedianMilliseconds(3, ripOnce);
    const double theirs = MedianMilliseconds(3, toolsOnce);
    return BenchFigure{ours / theirs, "x (target <= 0.6)"};
});
}  // namespace
