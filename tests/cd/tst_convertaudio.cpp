#include "cd/CDManager.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "platform/AudioEditor2.h"
#include "support/DialogAnswerer.h"
#include "support/Files.h"
#include "support/SoundFiles.h"
#include "support/TestGround.h"

#include <QFile>
#include <QTest>
#include <cmath>
#include <memory>

namespace {
double rms(const std::vector<int16_t>& s, int rate, double from, double to)
{
    const auto a = static_cast<size_t>(from * rate);
    const auto b = std::min(s.size(), static_cast<size_t>(to * rate));
    double sum = 0;
    for (size_t i = a; i < b; ++i)
        sum += double(s[i]) * s[i];
    return b > a ? std::sqrt(sum / double(b - a)) : 0;
}
}  // namespace

class tst_ConvertAudio : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<DialogAnswerer> answerer;

    QString scratch(const QString& name) const { return ground->tempFolder() + "/" + name; }

    // A steady 440 Hz tone at a quarter of full scale.
    QString steadyTone(const QString& name, double seconds)
    {
        const QString path = scratch(name);
        const bool ok = RunTool("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i",
                                           QString("aevalsrc=0.25*sin(2*PI*440*t):s=44100:d=%1").arg(seconds), "-ac",
                                           "2", path});
        return ok ? path : QString();
    }

    void convert(QString source, QString target, int32_t format)
    {
        TheCDManager()->ConvertAudio(source, target, format);
    }

private slots:
    void init()
    {
        ground = std::make_unique<TestGround>();
        answerer = std::make_unique<DialogAnswerer>();
        SaveAppSetting("VolumeBoost", "0", kSettings);
    }
    void cleanup()
    {
        QVERIFY2(answerer->unexpected.isEmpty(), qPrintable(answerer->unexpected.join(", ")));
        QVERIFY(answerer->allAnswered());
        answerer.reset();
        ground.reset();
    }
    void cleanupTestCase()
    {
        delete gobjCDManager;
        gobjCDManager = nullptr;
    }

    void fades_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("fadeIn");
        QTest::addColumn<QString>("fadeOut");
        QTest::addColumn<int>("format");
        QTest::addColumn<bool>("fadedIn");
        QTest::addColumn<bool>("fadedOut");
        QTest::addRow("both on") << 6.0 << "True" << "True" << 1 << true << true;
        QTest::addRow("wideband, in only") << 6.0 << "True" << "False" << 2 << true << false;
        QTest::addRow("out only, lower case") << 6.0 << "false" << "true" << 1 << false << true;
        QTest::addRow("not a truth word") << 6.0 << "yes" << "" << 1 << false << false;
        QTest::addRow("MP3 is never shaped") << 6.0 << "True" << "True" << 5 << false << false;
        QTest::addRow("WAV is never shaped") << 6.0 << "True" << "True" << 6 << false << false;
    }
    void fades()
    {
        QFETCH(double, seconds);
        QFETCH(QString, fadeIn);
        QFETCH(QString, fadeOut);
        QFETCH(int, format);
        QFETCH(bool, fadedIn);
        QFETCH(bool, fadedOut);
        SaveAppSetting("FadeIn", fadeIn, kSettings);
        SaveAppSetting("FadeOut", fadeOut, kSettings);
        const QString out = scratch("tone.out");
        convert(steadyTone("steady.wav", seconds), out, format);
        const int rate = format == 1 ? 8000 : 16000;
        const std::vector<int16_t> s = DecodeMono(out, rate);
        QVERIFY(!s.empty());
        const double length = double(s.size()) / rate;
        const double middle = rms(s, rate, 2.0, 3.0);
        QVERIFY2(middle > 2000, qPrintable(QString::number(middle)));
        // A linear fade over 1 s has a tenth of the level in its first (or
        // last) tenth of a second, and about half over the whole second.
        const double start = rms(s, rate, 0.02, 0.12), end = rms(s, rate, length - 0.12, length - 0.02);
        const double startSecond = rms(s, rate, 0.0, 1.0), endSecond = rms(s, rate, length - 1.0, length);
        if (fadedIn) {
            QVERIFY2(start < middle * 0.2, qPrintable(QString("%1 vs %2").arg(start).arg(middle)));
            QVERIFY(startSecond > middle * 0.4 && startSecond < middle * 0.75);
        } else {
            QVERIFY2(start > middle * 0.8, qPrintable(QString("%1 vs %2").arg(start).arg(middle)));
        }
        if (fadedOut) {
            QVERIFY2(end < middle * 0.2, qPrintable(QString("%1 vs %2").arg(end).arg(middle)));
            QVERIFY(endSecond > middle * 0.4 && endSecond < middle * 0.75);
        } else {
            QVERIFY2(end > middle * 0.8, qPrintable(QString("%1 vs %2").arg(end).arg(middle)));
        }
    }

    void volumeBoost_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<double>("low");  // the level against no boost, after the codec
        QTest::addColumn<double>("high");
        // AMR's gain coding makes the codec's own level bend a little; the
        // exact scale is checked on the samples in tst_sampleshaper.
        QTest::addRow("0 dB") << "0" << 0.97 << 1.03;
        QTest::addRow("6 dB") << "6" << 1.8 << 2.7;
        QTest::addRow("empty counts as 3") << "" << 1.3 << 1.75;
        QTest::addRow("text counts as 3") << "loud" << 1.3 << 1.75;
        QTest::addRow("12 dB clips a quarter-scale tone") << "12" << 3.0 << 6.5;
    }
    void volumeBoost()
    {
        QFETCH(QString, setting);
        QFETCH(double, low);
        QFETCH(double, high);
        const QString in = steadyTone("steady.wav", 3.0);
        convert(in, scratch("plain.amr"), 1);
        SaveAppSetting("VolumeBoost", setting, kSettings);
        convert(in, scratch("boost.amr"), 1);
        const std::vector<int16_t> plain = DecodeMono(scratch("plain.amr"), 8000);
        const std::vector<int16_t> boosted = DecodeMono(scratch("boost.amr"), 8000);
        const double ratio = rms(boosted, 8000, 0.5, 2.5) / rms(plain, 8000, 0.5, 2.5);
        QVERIFY2(ratio > low && ratio < high, qPrintable(QString::number(ratio)));
    }

    void failures_data()
    {
        QTest::addColumn<QString>("source");  // made in the test when it names a tone
        QTest::addColumn<QString>("target");
        QTest::addColumn<int>("format");
        QTest::addColumn<QString>("message");
        QTest::addRow("missing source, AMR") << "absent.mp3" << "t.amr" << 1 << "ConvertAudio: File not found";
        QTest::addRow("missing source, MP3") << "absent.mp3" << "t.mp3" << 5 << "ConvertAudio: File not found";
        QTest::addRow("no sound") << "letter.txt" << "t.amr" << 2 << "ConvertAudio: Format is not supported.";
        QTest::addRow("no such target folder, WAV") << "tone.wav" << "nowhere/t.wav" << 6
                                                    << "ConvertAudio: Path not found";
        QTest::addRow("no such target folder, AMR") << "tone.wav" << "nowhere/t.amr" << 1
                                                    << "ConvertAudio: Path/File access error";
    }
    void failures()
    {
        QFETCH(QString, source);
        QFETCH(QString, target);
        QFETCH(int, format);
        if (source == "tone.wav")
            MakeTone(scratch(source), 1.0);
        if (source == "letter.txt")
            QVERIFY(WriteFile(scratch(source), QByteArray("Dear phone,\n").repeated(100)));
        answerer->answer("MsgBox", "OK");
        convert(scratch(source), scratch(target), format);
        QVERIFY(answerer->allAnswered());
        QCOMPARE(answerer->seen.size(), 1);
        QTEST(answerer->seen.first().text, "message");
        QVERIFY(!QFile::exists(scratch(target)));
        QVERIFY(!QFile::exists(scratch(target) + ".part"));
    }

    void sendRoad_cutThenConvert_data()
    {
        QTest::addColumn<int>("frames");  // length of the marked part at 44.1 kHz
        QTest::addColumn<bool>("faded");
        QTest::addRow("exactly 5.0 s: no fades") << 44100 * 5 << false;
        QTest::addRow("5.05 s: fades") << 44100 * 5 + 2205 << true;
    }
    void sendRoad_cutThenConvert()
    {
        // As Send does it: the editor writes the marked part to an MP3,
        // which ConvertAudio turns into the tone. The MP3's own delay and
        // padding must not make a 5.0 s part count as longer.
        QFETCH(int, frames);
        SaveAppSetting("FadeIn", "True", kSettings);
        SaveAppSetting("FadeOut", "True", kSettings);
        AudioEditor2 editor;
        editor.OpenFile(steadyTone("song.wav", 9.0));
        editor.SetSelectionStart(44100);
        editor.SetSelectionEnd(44100 + frames);
        editor.SaveToFile(scratch("preview.mp3"), true, AudioEditor2::FormatMp3);
        convert(scratch("preview.mp3"), scratch("tone.amr"), 1);
        const std::vector<int16_t> s = DecodeMono(scratch("tone.amr"), 8000);
        QVERIFY(std::abs(double(s.size()) / 8000 - frames / 44100.0) <= 0.02);
        const double middle = rms(s, 8000, 2.0, 3.0);
        const double start = rms(s, 8000, 0.02, 0.12);
        QTEST(start < middle * 0.2, "faded");
    }

    void emptySource_givesEmptyTargetQuietly()
    {
        const QString in = scratch("empty.wav");
        QVERIFY(RunTool("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i", "anullsrc=r=44100:cl=mono", "-t", "0",
                                   in}));
        convert(in, scratch("t.wav"), 6);
        QVERIFY(QFile::exists(scratch("t.wav")));
        QVERIFY(DecodeMono(scratch("t.wav"), 16000).empty());
    }
};

QTEST_MAIN(tst_ConvertAudio)
#include "tst_convertaudio.moc"
