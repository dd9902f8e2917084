#include "core/CError.h"
#include "core/codepage.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/seams.h"
#include "support/DialogAnswerer.h"
#include "support/Files.h"
#include "support/TestGround.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFrame>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QTimer>
#include <memory>

class tst_Common : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;

    QString readLog() { return QString::fromLatin1(ReadFile(LogFilePath())); }

private slots:
    void init() { ground = std::make_unique<TestGround>(); }
    void cleanup() { ground.reset(); }

    void settings_handWrittenValuesReadAsTheyStand_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addRow("commas") << QByteArray("[Settings]\nQuillAssistURL=https://helper/x?a=1,2,3\n")
                                << "QuillAssistURL" << "https://helper/x?a=1,2,3";
        QTest::addRow("semicolon") << QByteArray("[Settings]\r\nQuillAssistURL = https://h/x;jsessionid=9 \r\n")
                                   << "QuillAssistURL" << "https://h/x;jsessionid=9";
        QTest::addRow("backslashes") << QByteArray("[Settings]\nQueuePath=C:\\tones\\new\n") << "QueuePath"
                                     << "C:\\tones\\new";
        QTest::addRow("quotes") << QByteArray("[Settings]\nPartnerID=\"42\"\n") << "PartnerID" << "\"42\"";
        QTest::addRow("other section") << QByteArray("[ToneData]\nOrigin=3\n[Settings]\nLogging=1\n") << "Origin"
                                       << "";
    }
    void settings_handWrittenValuesReadAsTheyStand()
    {
        QFETCH(QByteArray, file);
        QVERIFY(WriteFile(SettingsFilePath(), file));
        QFETCH(QString, key);
        QTEST(GetAppSetting(key, kSettings), "value");
    }

    void settings_unwritableStoreSaysSoOnce()
    {
        // A settings folder that is a file cannot be written, even by root.
        QFile blocker(ground->root() + "/blocked");
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, ground->root() + "/blocked/inner");
        DialogAnswerer answers;
        answers.answer("MsgBox", "OK");
        SaveAppSetting("FadeIn", "True", kSettings);
        SaveAppSetting("FadeOut", "True", kSettings);
        QTRY_VERIFY(answers.allAnswered());
        QCOMPARE(answers.seen.size(), 1);
        QVERIFY(answers.seen.first().text.startsWith("Quillotone could not save its settings"));
        QVERIFY(answers.unexpected.isEmpty());
    }

    void log_followsSwitchAtEachCall_data()
    {
        QTest::addColumn<QString>("logging");
        QTest::addColumn<bool>("written");
        QTest::addRow("on") << "1" << true;
        QTest::addRow("absent") << "" << false;
        QTest::addRow("zero") << "0" << false;
        QTest::addRow("True is not 1") << "True" << false;
        QTest::addRow("padded") << " 1" << false;
    }
    void log_followsSwitchAtEachCall()
    {
        QFETCH(QString, logging);
        QFETCH(bool, written);
        seams().now = [] { return QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7)); };
        WriteLog("before");
        QVERIFY(!QFile::exists(LogFilePath()));
        SaveAppSetting("Logging", logging, kSettings);
        WriteLog("Started Quillo Tone");
        WriteLog(QString::fromUtf8("café"));
        const QString stamp = DefaultDateTimeText(seams().now());
        const QString expected = stamp + ": Started Quillo Tone\n" + stamp + QString::fromUtf8(": café\n");
        QCOMPARE(readLog(), written ? expected : QString());
        if (written) {  // appended, and in the single-byte code page
            WriteLog("again");
            QVERIFY(readLog().startsWith(expected));
            QVERIFY(ReadFile(LogFilePath()).contains("caf\xe9\n"));
        }
    }

    void log_unwritableFolderRaises()
    {
        SaveAppSetting("Logging", "1", kSettings);
        QVERIFY(QDir(ground->programFolder()).mkpath("qtlog.txt"));  // a folder where the file goes
        try {
            WriteLog("x");
            QFAIL("WriteLog went on");
        } catch (const CError& e) {
            QCOMPARE(e.Number(), ErrNo::PathFileAccess);
        }
    }

    void encodeForUrl_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("encoded");
        QTest::addRow("empty") << "" << "";
        QTest::addRow("blanks only") << "    " << "";
        QTest::addRow("blank and ampersand") << "a b&c" << "a+b%26c";
        QTest::addRow("percent stays") << "50%" << "50%";
        QTest::addRow("CR LF") << "x\r\ny" << "x%0D%0Ay";
        QTest::addRow("tabs are not trimmed") << "\tx\t" << "%09x%09";
        QTest::addRow("outer blanks trimmed") << "  a b  " << "a+b";
        QTest::addRow("low controls") << QString(QChar(0)) + QChar(1) + QChar(9) << "%00%01%09";
        QTest::addRow("11 to 31 but 13 pass") << QString(QChar(11)) + QChar(12) + QChar(31) << QString(QChar(11)) + QChar(12) + QChar(31);
        QTest::addRow("marks") << "\"/:<=>?" << "%22%2F%3A%3C%3D%3E%3F";
        QTest::addRow("untouched marks") << "#+;%_-.*'" << "#+;%_-.*'";
        QTest::addRow("code page letters stay") << QString::fromUtf8("café €") << QString::fromUtf8("café+€");
        QTest::addRow("outside code page is ?") << QString::fromUtf8("Ā日") << "%3F%3F";
        QTest::addRow("astral is two ?") << QString::fromUtf8("😀") << "%3F%3F";
        QTest::addRow("email") << "jo.smith@example.com" << "jo.smith@example.com";
    }
    void encodeForUrl()
    {
        QFETCH(QString, value);
        const QString before = value;
        QTEST(EncodeForUrl(value), "encoded");
        QCOMPARE(value, before);
    }

    // Every byte reads as one character and comes back as itself, the five
    // unassigned ones too (the server reads them by the same table).
    void codePage_byteAndCharacter_data()
    {
        QTest::addColumn<int>("byte");
        QTest::addColumn<int>("character");
        QTest::addRow("euro") << 0x80 << 0x20AC;
        for (const int unassigned : {0x81, 0x8D, 0x8F, 0x90, 0x9D})
            QTest::addRow("unassigned %02X", unassigned) << unassigned << unassigned;
        QTest::addRow("last of the table") << 0x9F << 0x0178;
        QTest::addRow("Latin-1 above") << 0xE9 << 0x00E9;
    }
    void codePage_byteAndCharacter()
    {
        QFETCH(int, byte);
        QFETCH(int, character);
        QCOMPARE(int(codepage::FromAnsiByte(static_cast<unsigned char>(byte)).unicode()), character);
        QCOMPARE(int(codepage::ToAnsiByte(QChar(character))), byte);
    }

    void fileToHexString_failures_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<long>("number");
        QTest::addColumn<QString>("description");
        QTest::addRow("missing") << "gone.amr" << ErrNo::FileNotFound << "File not found";
        QTest::addRow("a folder") << "folder" << ErrNo::PathFileAccess << "Path/File access error";
    }
    void fileToHexString_failures()
    {
        QFETCH(QString, name);
        QDir(ground->tempFolder()).mkpath("folder");
        try {
            FileToHexString(ground->tempFolder() + "/" + name);
            QFAIL("no failure raised");
        } catch (const CError& e) {
            QTEST(e.Number(), "number");
            QTEST(e.Description(), "description");
        }
    }

    void setFormEnabled_switchesEveryControlAndTimer()
    {
        QWidget window;
        auto* button = new QPushButton(&window);
        auto* frame = new QFrame(&window);
        auto* nested = new QLineEdit(frame);
        auto* running = new QTimer(&window);
        auto* idle = new QTimer(&window);
        running->start(1000);
        nested->setEnabled(false);
        // A window it owns, such as a notice, is none of its controls.
        auto* owned = new QWidget(&window, Qt::Window);
        auto* ownedButton = new QPushButton(owned);
        auto* ownedTimer = new QTimer(ownedButton);

        SetFormEnabled(&window, false);
        QVERIFY(!button->isEnabled() && !frame->isEnabled() && !nested->isEnabled());
        QVERIFY(!running->isActive() && !idle->isActive());
        QCOMPARE(MousePointer(), int(vbHourglass));
        QVERIFY(owned->isEnabled() && ownedButton->isEnabled());

        SetFormEnabled(&window, true);
        // Nothing is remembered: what was off before comes on too.
        QVERIFY(button->isEnabled() && frame->isEnabled() && nested->isEnabled());
        QVERIFY(running->isActive() && idle->isActive());
        QCOMPARE(MousePointer(), int(vbDefault));
        QVERIFY(!ownedTimer->isActive());
    }
};

QTEST_MAIN(tst_Common)
#include "tst_common.moc"
