#include "core/CError.h"
#include "platform/AudioFileInfo.h"
#include "support/Files.h"
#include "support/SoundFiles.h"
#include "support/TestGround.h"

#include <QFile>
#include <QTest>
#include <algorithm>
#include <memory>

class tst_FileInfo : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;
    QString scratch(const QString& name) const { return ground->tempFolder() + "/" + name; }

    QString tagged(const QString& name)
    {
        const QString path = scratch(name);
        const bool ok = RunTool(
            "ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i", "sine=d=4", "-c:a", name.endsWith("wma") ? "wmav2" : "libmp3lame",
                       "-metadata", "title=Song Ü", "-metadata", "artist=The Band", "-metadata", "album=First",
                       "-metadata", "genre=Rock", "-metadata", "date=1999", "-metadata", "comment=nice",
                       "-metadata", "composer=Writer", "-metadata", "track=7/12", "-metadata", "album_artist=Various",
                       "-metadata", "publisher=Label Co", "-metadata", "copyright=(c) 1999",
                       "-metadata", "encoded_by=Someone", path});
        return ok ? path : QString();
    }

private slots:
    void init() { ground = std::make_unique<TestGround>(); }
    void cleanup() { ground.reset(); }

    void fields_inGetterOrder()
    {
        AudioFileInfo info;
        info.Open(tagged("tagged.mp3"));
        const QVariantList expected{QString::fromUtf8("Song Ü"), "The Band", "First", "Rock", QVariant::fromValue<int16_t>(1999),
                                    "nice", QVariant::fromValue<int32_t>(4), "Writer", QVariant::fromValue<int16_t>(7),
                                    "Various", "Label Co", "(c) 1999", "Someone"};
        for (int place = 1; place <= 13; ++place) {
            QCOMPARE(info.Field(place).metaType(), expected[place - 1].metaType());
            QCOMPARE(info.Field(place), expected[place - 1]);
        }
        QCOMPARE(info.Field(14), QVariant());
    }

    void fields_wmaTitleAndArtist()
    {
        AudioFileInfo info;
        info.Open(tagged("tagged.wma"));
        QCOMPARE(info.Title(), QString::fromUtf8("Song Ü"));
        QCOMPARE(info.Artist(), QString("The Band"));
    }

    void fields_emptyWhenUntaggedOrNoSound_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addRow("wav without tags") << "plain.wav";
        QTest::addRow("text file") << "letter.mp3";
    }
    void fields_emptyWhenUntaggedOrNoSound()
    {
        QFETCH(QString, name);
        if (name.endsWith("wav"))
            MakeTone(scratch(name), 1.0);
        else
            QVERIFY(WriteFile(scratch(name), "not a song\n"));
        AudioFileInfo info;
        info.Open(scratch(name));
        for (int place : {1, 2, 3, 4, 6, 8, 10, 11, 12, 13})
            QCOMPARE(info.Field(place).toString(), QString());
        QCOMPARE(info.Year(), int16_t(0));
        QCOMPARE(info.Track(), int16_t(0));
    }

    void fileInfo_missingFileFails()
    {
        AudioFileInfo info;
        QVERIFY_THROWS_EXCEPTION(CError, info.Open(scratch("none.mp3")));
    }

    void audioInfo_lengths_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("seconds");
        QTest::addColumn<int>("tolerance");
        QTest::addRow("wav") << "a.wav" << 2.5 << 1;
        QTest::addRow("mp3") << "a.mp3" << 95.0 << 60;
        QTest::addRow("wma") << "a.wma" << 3.0 << 100;
    }
    void audioInfo_lengths()
    {
        QFETCH(QString, name);
        QFETCH(double, seconds);
        QFETCH(int, tolerance);
        AudioInfo info;
        QCOMPARE(info.DurationMilliseconds(), 0);
        info.Open(MakeTone(scratch(name), seconds, 440, 22050, 1));
        QVERIFY2(qAbs(info.DurationMilliseconds() - seconds * 1000) <= tolerance,
                 qPrintable(QString::number(info.DurationMilliseconds())));
    }

    // Headers that claim more than their file holds: both readers give the
    // length of the sound that is there, never a negative or wrapped one.
    void lengths_whenTheHeaderLies_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addRow("mp3 whose frame count claims 56 million seconds") << "liar.mp3";
        QTest::addRow("wave whose header claims 4 GB") << "liar.wav";
    }
    void lengths_whenTheHeaderLies()
    {
        QFETCH(QString, name);
        const QString path = MakeTone(scratch(name), 3.0, 440, 44100, 2);
        QByteArray bytes = ReadFile(path);
        if (name.endsWith("mp3")) {
            // The LAME tag's frame count, which readers believe over the file's size.
            const qsizetype tag = std::max(bytes.indexOf("Info"), bytes.indexOf("Xing"));
            QVERIFY(tag > 0 && (uchar(bytes[tag + 7]) & 1));
            bytes.replace(tag + 8, 4, QByteArray("\x7f\xff\xff\xff", 4));
        } else {
            const QByteArray huge("\xf0\xff\xff\xff", 4);
            bytes.replace(4, 4, huge);
            bytes.replace(bytes.indexOf("data") + 4, 4, huge);
        }
        QVERIFY(WriteFile(path, bytes));
        AudioInfo length;
        length.Open(path);
        QVERIFY2(qAbs(length.DurationMilliseconds() - 3000) <= 100, qPrintable(QString::number(length.DurationMilliseconds())));
        AudioFileInfo tags;
        tags.Open(path);
        QVERIFY2(tags.Duration() >= 2 && tags.Duration() <= 3, qPrintable(QString::number(tags.Duration())));
    }
};

QTEST_MAIN(tst_FileInfo)
#include "tst_fileinfo.moc"
