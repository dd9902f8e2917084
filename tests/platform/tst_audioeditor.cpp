#include "core/CError.h"
#include "platform/AudioDecoder.h"
#include "platform/AudioEditor2.h"
#include "platform/EditorPlayback.h"
#include "platform/SongFeatures.h"
#include "platform/SoundScan.h"
#include "support/Files.h"
#include "support/SoundFiles.h"
#include "support/SoundTestCase.h"

#include <QFile>
#include <QImage>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

class tst_AudioEditor : public SoundTestCase {
    Q_OBJECT
    // The case that unplugs the devices comes last.

    QString openError(AudioEditor2& editor, const QString& path)
    {
        try {
            editor.OpenFile(path);
        } catch (const CError& e) {
            return e.Description();
        }
        return {};
    }

private slots:
    void openFile_lengthAndProgress_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("slack");  // frames the codec may add or lose
        QTest::addRow("wav stereo") << "a.wav" << 44100 << 2 << 0;
        QTest::addRow("wav mono 8 kHz") << "b.wav" << 8000 << 1 << 0;
        QTest::addRow("mp3 stereo") << "c.mp3" << 44100 << 2 << 1152;
        QTest::addRow("mp3 mono 22 kHz") << "d.mp3" << 22050 << 1 << 1152;
        QTest::addRow("wma stereo 48 kHz") << "e.wma" << 48000 << 2 << 4096;
    }
    void openFile_lengthAndProgress()
    {
        QFETCH(QString, name);
        QFETCH(int, rate);
        QFETCH(int, channels);
        QFETCH(int, slack);
        const QString path = MakeTone(scratch(name), 3.0, 440, rate, channels);
        QVERIFY(!path.isEmpty());
        AudioEditor2 editor;
        QSignalSpy progress(&editor, &AudioEditor2::OnEditorProgress);
        editor.OpenFile(path);
        QVERIFY(qAbs(editor.TotalSamples() - 3 * rate) <= slack);
        QCOMPARE(editor.ViewStart(), 0);
        QCOMPARE(editor.ViewEnd(), editor.TotalSamples());
        QCOMPARE(editor.SamplesToMilliseconds(rate * 2), 2000);
        QCOMPARE(editor.Peaks().Channels(), channels);
        QVERIFY(progress.size() >= 2);
        int last = -1;
        for (const auto& args : progress) {
            QVERIFY(args.at(0).toInt() >= last);
            last = args.at(0).toInt();
        }
        QCOMPARE(last, 100);
        // FFmpeg's test sine, at most an eighth of full scale, shows in the summary.
        const PeakSummary::Span whole = editor.Peaks().Range(0, 0, editor.TotalSamples());
        QVERIFY(whole.high > 2000 && whole.high < 4300);
        QVERIFY(whole.low < -2000 && whole.low > -4300);
    }

    void openFile_badInput_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("error");
        QTest::addRow("wave header only") << QByteArray("RIFF\x24\x00\x00\x00WAVEfmt ", 16) + QByteArray(28, '\0')
                                          << "Format is not supported.";
        // A whole header of 8 kHz mono 16-bit wave whose data chunk is empty.
        QTest::addRow("wave without samples")
            << QByteArray::fromHex("524946462400000057415645666d74201000000001000100"
                                   "401f0000803e0000020010006461746100000000")
            << "The file is empty or damaged.";
        // 24,000 frames whose header says 1 Hz: saving them resampled 8,000-fold.
        QTest::addRow("wave at a rate no sound card plays")
            << QByteArray::fromHex("52494646a4bb000057415645666d74201000000001000100"
                                   "0100000002000000020010006461746180bb0000") + QByteArray(48000, '\x10')
            << "Format is not supported.";
    }
    void openFile_badInput()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, error);
        const QString path = scratch("bad.mp3");
        QVERIFY(WriteFile(path, content));
        AudioEditor2 editor;
        QCOMPARE(openError(editor, path), error);
        QCOMPARE(editor.TotalSamples(), 0);
        // Nothing to play, and no crash for trying.
        editor.Play(1);
        QVERIFY(!editor.IsPlaying());
        // A sound already in the editor stays there, whole.
        editor.OpenFile(MakeTone(scratch("good.wav"), 1.0, 440, 8000, 1));
        editor.SetSelectionStart(100);
        QCOMPARE(openError(editor, path), error);
        QCOMPARE(editor.TotalSamples(), 8000);
        QCOMPARE(editor.SelectionStart(), 100);
    }

    // Files players take although they are damaged or odd: each opens whole
    // to its true length, and sound is there to its end.
    void openFile_damagedButAudible_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("channels");  // of the first part; a second part has the other count
        QTest::addColumn<int>("secondRate");
        QTest::addColumn<double>("seconds");
        QTest::addColumn<int>("slack");
        QTest::addRow("mp3 cut in half") << "cut" << "cut.mp3" << 2 << 0 << 2.0 << 2 * 1152;
        QTest::addRow("wav cut in half, header still says 4 s") << "cut" << "cut.wav" << 2 << 0 << 2.0 << 2 * 1152;
        QTest::addRow("wave header claims 4 GB") << "liar" << "liar.wav" << 2 << 0 << 4.0 << 0;
        // Two MP3 files one after the other in one file.
        QTest::addRow("mono then stereo") << "joined" << "both.mp3" << 1 << 44100 << 4.0 << 4 * 1152;
        QTest::addRow("stereo then mono at 22 kHz") << "joined" << "both.mp3" << 2 << 22050 << 4.0 << 4 * 1152;
    }
    void openFile_damagedButAudible()
    {
        QFETCH(QString, damage);
        QFETCH(QString, name);
        QFETCH(int, channels);
        QFETCH(double, seconds);
        QFETCH(int, slack);
        const QString path = scratch(name);
        if (damage == "joined") {
            QFETCH(int, secondRate);
            const QByteArray first = ReadFile(MakeTone(scratch("one.mp3"), 2.0, 440, 44100, channels));
            const QByteArray second = ReadFile(MakeTone(scratch("two.mp3"), 2.0, 660, secondRate, 3 - channels));
            QVERIFY(!first.isEmpty() && !second.isEmpty());
            QVERIFY(WriteFile(path, first + second));
        } else {
            MakeTone(path, 4.0, 440, 44100, channels);
            QFile f(path);
            QVERIFY(f.open(QIODevice::ReadWrite));
            if (damage == "cut") {
                QVERIFY(f.resize(f.size() / 2));
            } else {
                const QByteArray huge("\xf0\xff\xff\xff", 4);
                const qint64 data = f.readAll().indexOf("data");
                QVERIFY(f.seek(4) && f.write(huge) == 4);
                QVERIFY(data > 0 && f.seek(data + 4) && f.write(huge) == 4);
            }
        }
        AudioEditor2 editor;
        QCOMPARE(openError(editor, path), QString());
        QVERIFY2(qAbs(editor.TotalSamples() - seconds * 44100) <= slack, qPrintable(QString::number(editor.TotalSamples())));
        const qint64 end = qint64(seconds * 44100) - slack;
        QVERIFY(editor.Peaks().Range(0, end - 4410, end).high > 2000);
    }

    void decoder_flippedBytesNeverCrash_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addRow("mp3") << "f.mp3";
        QTest::addRow("wav") << "f.wav";
        QTest::addRow("wma") << "f.wma";
    }
    void decoder_flippedBytesNeverCrash()
    {
        QFETCH(QString, name);
        const QByteArray good = ReadFile(MakeTone(scratch("a" + name), 1.0, 440, 44100, 2));
        QVERIFY(good.size() > 1000);
        // Half the flips hit the bytes after a frame sync, where a header
        // says the layout and rate: damage there is what decoders meet most.
        QList<int> headers;
        for (int i = 0; i + 3 < good.size(); ++i) {
            if (uchar(good[i]) == 0xFF && (uchar(good[i + 1]) & 0xE0) == 0xE0)
                headers << i;
        }
        QRandomGenerator random(20261123);
        int opened = 0;
        for (int round = 0; round < 150; ++round) {
            QByteArray bad = good;
            const int flips = 1 + round % 12;
            for (int i = 0; i < flips; ++i) {
                const int at = i % 2 && !headers.isEmpty() ? headers[random.bounded(int(headers.size()))] + 1 +
                                                                 random.bounded(3)
                                                           : random.bounded(int(bad.size()));
                bad[at] ^= char(1 << random.bounded(8));
            }
            const QString path = scratch(QString("%1-%2").arg(round).arg(name));
            QVERIFY(WriteFile(path, bad));
            AudioDecoder decoder;
            try {
                decoder.Open(path);
                std::vector<int16_t> frames(4096 * 2);
                while (decoder.Read(frames.data(), 4096) > 0) {
                }
                decoder.Seek(1000);
                decoder.Read(frames.data(), 4096);
                ++opened;
            } catch (const CError&) {
            }
            QFile::remove(path);
        }
        QVERIFY(opened > 0);  // most damage leaves a playable file
    }

    void ruler_everyLabelStandsWholeInside_data()
    {
        QTest::addColumn<double>("from");
        QTest::addColumn<double>("to");
        QTest::addRow("whole file") << 0.0 << 10.0;
        QTest::addRow("trimmed to whole seconds") << 2.0 << 5.0;
        QTest::addRow("trimmed to tenths") << 2.0 << 2.6;
        QTest::addRow("trimmed near the end") << 7.3 << 10.0;
    }
    void ruler_everyLabelStandsWholeInside()
    {
        QFETCH(double, from);
        QFETCH(double, to);
        AudioEditor2 editor;
        editor.resize(420, 56);
        editor.OpenFile(MakeTone(scratch("ruler.wav"), 10.0, 440, 8000, 1));
        editor.ZoomToRange(int32_t(from * 8000), int32_t(to * 8000));
        const auto marks = editor.RulerMarks();
        QVERIFY(marks.size() >= 3);
        for (const auto& mark : marks)
            QVERIFY2(mark.text.left() >= 0 && mark.text.right() < editor.width(), qPrintable(mark.label));
    }

    void peaks_matchTheSamplesAtEveryLevel_data()
    {
        QTest::addColumn<qint64>("from");
        QTest::addColumn<qint64>("to");
        QTest::addRow("one block") << qint64(64) << qint64(128);
        QTest::addRow("a pixel at level 1") << qint64(1024) << qint64(3072);
        QTest::addRow("a pixel at level 2") << qint64(16384) << qint64(16384 * 3);
        QTest::addRow("the whole") << qint64(0) << qint64(300000);
        QTest::addRow("past the end") << qint64(299000) << qint64(400000);
    }
    void peaks_matchTheSamplesAtEveryLevel()
    {
        QFETCH(qint64, from);
        QFETCH(qint64, to);
        // A ramp that grows with the frame number and flips its sign in every
        // other block of 64: each block's extremes are its own.
        std::vector<int16_t> frames(300000 * 2);
        for (int i = 0; i < 300000; ++i) {
            const int v = (i / 10) % 30000 * ((i / 64) % 2 ? -1 : 1);
            frames[2 * i] = static_cast<int16_t>(v);
            frames[2 * i + 1] = static_cast<int16_t>(-v / 2);
        }
        PeakSummary peaks;
        peaks.Reset(2);
        for (int at = 0; at < 300000; at += 1000)
            peaks.Add(frames.data() + 2 * at, 1000);
        peaks.Finish();
        QCOMPARE(peaks.Frames(), qint64(300000));
        for (int c = 0; c < 2; ++c) {
            int low = INT16_MAX, high = INT16_MIN;
            for (qint64 i = from; i < std::min<qint64>(to, 300000); ++i) {
                low = std::min<int>(low, frames[2 * i + c]);
                high = std::max<int>(high, frames[2 * i + c]);
            }
            const PeakSummary::Span span = peaks.Range(c, from, to);
            QCOMPARE(int(span.low), low);
            QCOMPARE(int(span.high), high);
        }
    }

    // A long sound is read in two halves at once; joined, they are what one
    // reading from start to end gives, block for block.
    void scan_halvesJoinAsOneReading_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("codec");
        QTest::addColumn<bool>("joins");
        QTest::addRow("mp3 constant rate") << "j.mp3" << QStringList{"-b:a", "128k"} << true;
        QTest::addRow("mp3 variable rate") << "k.mp3" << QStringList{"-q:a", "4"} << true;
        QTest::addRow("wav") << "l.wav" << QStringList{} << true;
    }
    void scan_halvesJoinAsOneReading()
    {
        QFETCH(QString, name);
        QFETCH(QStringList, codec);
        QFETCH(bool, joins);
        const QString path = scratch(name);
        QVERIFY(RunTool("ffmpeg", QStringList{"-v", "error", "-y", "-f", "lavfi", "-i",
                                              "aevalsrc=0.4*sin(2*PI*(100+40*t)*t)|0.3*sin(2*PI*(900-9*t)*t):s=44100:d=75"} +
                                      codec + QStringList{path}));
        AudioDecoder source;
        source.Open(path);
        PeakSummary halves;
        halves.Reset(2);
        SongFeatures halvesFeatures;
        halvesFeatures.Reset(44100, 2);
        QCOMPARE(ScanSound(source, path, halves, halvesFeatures, [](int) {}), joins);
        halves.Finish();
        halvesFeatures.Finish();

        AudioDecoder whole;
        whole.Open(path);
        PeakSummary once;
        once.Reset(2);
        SongFeatures onceFeatures;
        onceFeatures.Reset(44100, 2);
        std::vector<int16_t> chunk(2 * 10000);
        while (const int got = whole.Read(chunk.data(), 10000)) {
            once.Add(chunk.data(), got);
            onceFeatures.Add(chunk.data(), got);
        }
        once.Finish();
        onceFeatures.Finish();
        QCOMPARE(halves.Frames(), once.Frames());
        for (int c = 0; c < 2; ++c) {
            for (qint64 at = 0; at < once.Frames(); at += PeakSummary::kBlock) {
                const PeakSummary::Span a = halves.Range(c, at, at + 1), b = once.Range(c, at, at + 1);
                QVERIFY2(a.low == b.low && a.high == b.high, qPrintable(QString("block at %1").arg(at)));
            }
        }
        QCOMPARE(halvesFeatures.Stretches(), onceFeatures.Stretches());
        QCOMPARE(halvesFeatures.BestPart(20).start, onceFeatures.BestPart(20).start);
    }

    void decoder_seekIsSampleAccurate_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("tolerance");
        QTest::addRow("wav") << "s.wav" << 0;
        QTest::addRow("mp3") << "s.mp3" << 2;
        QTest::addRow("wma, millisecond timestamps") << "s.wma" << 2;
    }
    void decoder_seekIsSampleAccurate()
    {
        QFETCH(QString, name);
        QFETCH(int, tolerance);
        // A rising sweep: every position has its own waveform.
        const QString path = scratch(name);
        QVERIFY(RunTool("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i",
                                   "aevalsrc=0.5*sin(2*PI*(200+300*t)*t):s=44100:d=6", "-ac", "1", path}));
        const std::vector<int16_t> reference = DecodeMono(path, 44100);
        AudioDecoder decoder;
        decoder.Open(path);
        for (const int64_t at : {int64_t(0), int64_t(123457), int64_t(44100), int64_t(200000), int64_t(7)}) {
            decoder.Seek(at);
            QCOMPARE(decoder.Position(), at);
            std::vector<int16_t> got(2000);
            QCOMPARE(decoder.Read(got.data(), 2000), 2000);
            for (int i = 0; i < 2000; i += 97)
                QVERIFY2(qAbs(got[i] - reference[at + i]) <= tolerance,
                         qPrintable(QString("frame %1: %2 vs %3").arg(at + i).arg(got[i]).arg(reference[at + i])));
        }
    }

    void selection_byCodeAndMouse()
    {
        AudioEditor2 editor;
        editor.resize(400, 120);
        editor.OpenFile(MakeTone(scratch("m.wav"), 4.0, 440, 8000, 1));
        QSignalSpy changed(&editor, &AudioEditor2::OnEditorSelectionChanged);
        QSignalSpy set(&editor, &AudioEditor2::OnEditorPositionSet);
        QSignalSpy moved(&editor, &AudioEditor2::OnEditorMouseMove);
        editor.SetSelectionStart(1000);
        editor.SetSelectionEnd(50000);  // beyond the end: held to the file
        QCOMPARE(editor.SelectionEnd(), editor.TotalSamples());
        // Both sets are told once, through the event loop, with the marks they made.
        QCOMPARE(changed.size(), 0);
        QTRY_COMPARE(changed.size(), 1);
        QCoreApplication::processEvents();
        QCOMPARE(changed.size(), 1);

        editor.ZoomToRange(8000, 16000);
        QCOMPARE(editor.PlayPosition(), 8000);  // the cursor at 0 was outside the range
        // Drag from a quarter to three quarters of the zoomed view.
        QTest::mousePress(&editor, Qt::LeftButton, {}, QPoint(100, 60));
        QTest::mouseMove(&editor, QPoint(200, 60));
        QTest::mouseMove(&editor, QPoint(300, 60));
        QTest::mouseRelease(&editor, Qt::LeftButton, {}, QPoint(300, 60));
        QCOMPARE(editor.SelectionStart(), 10000);
        QCOMPARE(editor.SelectionEnd(), 14000);
        QVERIFY(editor.ShowSelection());
        QVERIFY(moved.size() >= 2);
        QCOMPARE(set.size(), 0);
        // A click places the play cursor and drops the marks.
        QTest::mouseClick(&editor, Qt::LeftButton, {}, QPoint(200, 60));
        QCOMPARE(editor.PlayPosition(), 12000);
        QCOMPARE(editor.SelectionStart(), 0);
        QCOMPARE(editor.SelectionEnd(), 0);
        QCOMPARE(set.size(), 1);

        editor.ZoomFull();
        QCOMPARE(editor.ViewStart(), 0);
        QCOMPARE(editor.ViewEnd(), editor.TotalSamples());
        editor.SetPlayPosition(-5);
        QCOMPARE(editor.PlayPosition(), 0);
    }

    void saveToFile_selection_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<int>("sourceRate");
        QTest::addColumn<int>("format");
        QTest::addColumn<QString>("codec");
        QTest::addColumn<int>("rate");      // an MP3 cut is mono at 22.05 kHz at most
        QTest::addColumn<int>("channels");
        QTest::addColumn<bool>("gone");  // the source deleted once open: the editor keeps its file open
        QTest::addRow("mp3 from mp3") << "src.mp3" << 44100 << 2 << "mp3" << 22050 << 1 << false;
        QTest::addRow("mp3 from wma") << "src.wma" << 44100 << 2 << "mp3" << 22050 << 1 << false;
        QTest::addRow("mp3 from 96 kHz wav") << "src.wav" << 96000 << 2 << "mp3" << 22050 << 1 << false;
        QTest::addRow("wave from wav") << "src.wav" << 44100 << 1 << "pcm_s16le" << 44100 << 2 << false;
        QTest::addRow("mp3 from a deleted mp3") << "src.mp3" << 44100 << 2 << "mp3" << 22050 << 1 << true;
    }
    void saveToFile_selection()
    {
        QFETCH(QString, source);
        QFETCH(int, sourceRate);
        QFETCH(int, format);
        QFETCH(int, rate);
        AudioEditor2 editor;
        editor.OpenFile(MakeTone(scratch(source), 8.0, 440, sourceRate, 2));
        QFETCH(bool, gone);
        if (gone)
            QVERIFY(QFile::remove(scratch(source)));
        editor.SetSelectionStart(sourceRate);
        editor.SetSelectionEnd(sourceRate * 4 + sourceRate / 2);  // 3.5 s
        QSignalSpy progress(&editor, &AudioEditor2::OnEditorProgress);
        const QString out = scratch("preview.mp3");
        editor.SaveToFile(out, true, format);
        QCOMPARE(progress.last().at(0).toInt(), 100);
        const ProbedSound probed = Probe(out);
        QTEST(probed.codec, "codec");
        QCOMPARE(probed.sampleRate, rate);
        QTEST(probed.channels, "channels");
        // ffprobe counts whole MP3 frames, the encoder's delay included;
        // a decoder that honours the stored delay gets the cut to the sample.
        QVERIFY2(qAbs(probed.seconds - 3.5) <= 2 * 1152.0 / rate, qPrintable(QString::number(probed.seconds)));
        QVERIFY(qAbs(int(DecodeMono(out, 44100).size()) - 44100 * 7 / 2) <= 1152);
        QVERIFY(!QFile::exists(out + ".part"));
    }

    void saveToFile_handlersThatPumpCannotDisturbIt()
    {
        // The progress handler of the main window pumps events; a click on
        // Play or Open arriving then must not move the file under the cut.
        AudioEditor2 editor;
        editor.OpenFile(MakeTone(scratch("busy.wav"), 6.0, 440, 44100, 2));
        editor.SetSelectionStart(44100);
        editor.SetSelectionEnd(44100 * 4);
        QStringList refused;
        connect(&editor, &AudioEditor2::OnEditorProgress, this, [&](int) {
            editor.Play(1);
            try {
                editor.OpenFile(scratch("busy.wav"));
            } catch (const CError& e) {
                refused << e.Description();
            }
        });
        editor.SaveToFile(scratch("busy.mp3"), true, 2);
        QVERIFY(!editor.IsPlaying());
        QVERIFY(!refused.isEmpty());
        QCOMPARE(refused.first(), QString("The editor is busy"));
        QVERIFY(qAbs(int(DecodeMono(scratch("busy.mp3"), 44100).size()) - 44100 * 3) <= 1152);
    }

    void saveToFile_unwritableTargetLeavesNothing()
    {
        AudioEditor2 editor;
        editor.OpenFile(MakeTone(scratch("x.wav"), 1.0));
        QString error;
        try {
            editor.SaveToFile(scratch("no/such/folder/preview.mp3"), true, 2);
        } catch (const CError& e) {
            error = e.Description();
        }
        QVERIFY(!error.isEmpty());
        QVERIFY(!QFile::exists(scratch("no/such/folder/preview.mp3")));
    }

    void gain_clipsInsteadOfWrapping_data()
    {
        QTest::addColumn<int>("sample");
        QTest::addColumn<double>("gain");
        QTest::addColumn<int>("expected");
        QTest::addRow("unity") << 1234 << 1.0 << 1234;
        QTest::addRow("double, fits") << 1000 << 2.0 << 2000;
        QTest::addRow("double, clips high") << 20000 << 2.0 << 32767;
        QTest::addRow("double, clips low") << -20000 << 2.0 << -32768;
        QTest::addRow("half") << -3000 << 0.5 << -1500;
        QTest::addRow("silence") << 32767 << 0.0 << 0;
    }
    void gain_clipsInsteadOfWrapping()
    {
        QFETCH(int, sample);
        QFETCH(double, gain);
        int16_t s = static_cast<int16_t>(sample);
        ApplyGain(&s, 1, gain);
        QTEST(int(s), "expected");
    }

    void play_selectionRunsToItsEnd()
    {
        AudioEditor2 editor;
        editor.OpenFile(MakeTone(scratch("p.wav"), 2.0, 440, 44100, 2));
        editor.SetSelectionStart(22050);
        editor.SetSelectionEnd(44100);
        QSignalSpy position(&editor, &AudioEditor2::OnEditorPositionChanged);
        editor.SetVolume(32000);
        editor.PreparePlay();
        editor.Play(1);
        QVERIFY(editor.IsPlaying());
        QTRY_VERIFY_WITH_TIMEOUT(!editor.IsPlaying(), 10000);
        QVERIFY(position.size() >= 3);
        QCOMPARE(editor.PlayPosition(), 44100);  // the cursor ends at the end of the part
        // Stop at once after a start is harmless.
        editor.Play(1);
        editor.Stop();
        QVERIFY(!editor.IsPlaying());
        // Nothing marked in a zoomed view: the view plays, from its start
        // when the cursor stands outside it.
        editor.SetSelectionStart(0);
        editor.SetSelectionEnd(0);
        editor.ZoomToRange(44100, 44100 + 8820);
        editor.SetPlayPosition(100);
        editor.Play(1);
        QCOMPARE(editor.PlayPosition(), 44100);
        QTRY_VERIFY_WITH_TIMEOUT(!editor.IsPlaying(), 10000);
        QVERIFY(editor.PlayPosition() >= 44100 && editor.PlayPosition() <= 44100 + 8820);
    }

    void paint_showsWaveSelectionAndCursor()
    {
        AudioEditor2 editor;
        editor.resize(300, 100);
        editor.OpenFile(MakeTone(scratch("v.wav"), 2.0, 200, 8000, 1));
        editor.SetSelectionStart(4000);
        editor.SetSelectionEnd(8000);
        editor.SetPlayPosition(12000);
        const QImage shot = editor.grab().toImage();
        auto count = [](const QColor& colour, const QImage& image) {
            int n = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    n += image.pixelColor(x, y) == colour;
            return n;
        };
        const EditorAppearance& look = editor.Appearance();
        QVERIFY(count(look.wave, shot) > 500);
        QVERIFY(count(look.selectedBackground, shot) > 100);
        QVERIFY(count(look.selectionMarks, shot) >= 2 * 50);
        QVERIFY(count(look.playCursor, shot) >= 50);
        editor.SetShowSelection(false);
        QCOMPARE(count(look.selectedBackground, editor.grab().toImage()), 0);
    }

    // An opening file shows what is decoded of it, left to right over the
    // length its header tells, and cannot be marked or played until whole.
    void paint_showsWhatIsDecodedWhileOpening()
    {
        AudioEditor2 editor;
        editor.resize(300, 100);
        editor.show();
        const QString path = MakeTone(scratch("long.wav"), 30.0, 200, 8000, 1);
        const QColor wave = editor.Appearance().wave;
        int halfway = -1, left = 0, right = 0, total = -1, mark = -1;
        connect(&editor, &AudioEditor2::OnEditorProgress, &editor, [&](int percent) {
            if (halfway >= 0 || percent < 40 || percent > 70)
                return;
            halfway = percent;
            total = editor.TotalSamples();
            editor.SetSelectionStart(100);
            mark = editor.SelectionStart();
            editor.Play(1);
            const QImage shot = editor.grab().toImage();
            for (int y = 0; y < shot.height(); ++y) {
                for (int x = 0; x < 60; ++x) {
                    left += shot.pixelColor(x, y) == wave;
                    right += shot.pixelColor(shot.width() - 1 - x, y) == wave;
                }
            }
        });
        editor.OpenFile(path);
        QVERIFY(halfway >= 0);
        QCOMPARE(total, 0);
        QVERIFY2(left > 200, qPrintable(QString::number(left)));
        QCOMPARE(right, 0);
        QCOMPARE(mark, 0);
        QVERIFY(!editor.IsPlaying());
        QCOMPARE(editor.TotalSamples(), 30 * 8000);
    }

    // Last: it takes the sound server's devices away for the rest of the run.
    void play_deviceVanishingEndsPlayback()
    {
        AudioEditor2 editor;
        editor.OpenFile(MakeTone(scratch("long.wav"), 30.0, 440, 8000, 1));
        QSignalSpy position(&editor, &AudioEditor2::OnEditorPositionChanged);
        editor.Play(1);
        QVERIFY(position.wait(5000));
        QVERIFY(pulse->UnplugDevices());
        QTRY_VERIFY_WITH_TIMEOUT(!editor.IsPlaying(), 10000);
        QVERIFY(editor.PlayPosition() < 8000 * 10);
        // Play with no output left is silent, not a failure.
        editor.Play(1);
        QTRY_VERIFY_WITH_TIMEOUT(!editor.IsPlaying(), 10000);
        // Saving still works without a sound device.
        editor.SetSelectionStart(0);
        editor.SetSelectionEnd(8000);
        editor.SaveToFile(scratch("after.mp3"), true, 2);
        QCOMPARE(Probe(scratch("after.mp3")).codec, QString("mp3"));
    }
};

QTEST_MAIN(tst_AudioEditor)
#include "tst_audioeditor.moc"
