#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modEncryption.h"
#include "core/modMACAddress.h"
#include "support/DialogAnswerer.h"
#include "support/TestGround.h"

#include <QRegularExpression>
#include <QTest>
#include <memory>

class tst_Encryption : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;

private slots:
    void init() { ground = std::make_unique<TestGround>(); }
    void cleanup() { ground.reset(); }

    void roundTrip_data()
    {
        QTest::addColumn<QString>("plain");
        QTest::addRow("15 chars") << "abcdefghijklmno";
        QTest::addRow("one block") << "abcdefghijklmnop";
        QTest::addRow("17 chars") << "abcdefghijklmnopq";
        QTest::addRow("code page letters") << QString::fromUtf8("pässwörd €5");
        QTest::addRow("empty") << "";
    }
    void roundTrip()
    {
        QFETCH(QString, plain);
        const QString key = Hash("001122334455");
        const QString first = Encrypt(plain, key);
        const QString second = Encrypt(plain, key);
        QVERIFY(QRegularExpression("^[0-9A-F]+$").match(first).hasMatch());
        // IV in front, then whole blocks with padding.
        QCOMPARE(first.size(), 2 * (16 + 16 * (plain.size() / 16 + 1)));
        QVERIFY(first != second);
        QCOMPARE(Decrypt(first, key), plain);
        QCOMPARE(Decrypt(second.toLower(), key), plain);
    }

    void wrongPassPhraseNeverGivesThePlainText()
    {
        DialogAnswerer answers;  // each failure box is closed as unexpected and counted
        int failures = 0;
        for (int i = 0; i < 20; ++i) {
            const QString cipher = Encrypt("secret password", "right key");
            const QString plain = Decrypt(cipher, "wrong key");
            QVERIFY(plain != "secret password");
            if (plain.isEmpty())
                ++failures;
        }
        QCOMPARE(answers.unexpected.size(), failures);
        QVERIFY(failures > 0);
        for (const QString& box : answers.unexpected)
            QVERIFY2(box.startsWith("MsgBox: Error during Decrypt.\n"), qPrintable(box));
    }

    void decryptOfGarbage_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addRow("empty") << "";
        QTest::addRow("not hex") << "ZZZZ";
        QTest::addRow("odd length") << "ABC";
        QTest::addRow("IV only") << QString(32, 'A');
        QTest::addRow("not whole blocks") << QString(66, 'A');
        QTest::addRow("bad padding") << QString(64, '0');
    }
    void decryptOfGarbage()
    {
        QFETCH(QString, value);
        DialogAnswerer answers;
        answers.answer("MsgBox", "OK");
        QCOMPARE(Decrypt(value, "key"), QString());
        QVERIFY(answers.allAnswered());
        const QString text = answers.seen.first().text;
        // Fixed line, line break, description, blank, number in hexadecimal in brackets.
        QVERIFY2(QRegularExpression("^Error during Decrypt\\.\\n.+ \\([0-9A-F]+\\)$").match(text).hasMatch(), qPrintable(text));
    }

    void hash_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("hash");
        QTest::addRow("abc") << "abc" << "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD";
        QTest::addRow("code page byte") << QString::fromUtf8("café") << "DAFD66C0B98965E688BE1FC12942C09F0350E6BE0685017C3F234E97D0ADC92E";
    }
    void hash()
    {
        QFETCH(QString, value);
        QTEST(Hash(value), "hash");
    }

    void firstAdapter_data()
    {
        QTest::addColumn<QList<NetworkAdapter>>("adapters");
        QTest::addColumn<QString>("address");
        QTest::addRow("none") << QList<NetworkAdapter>{} << "000000000000";
        QTest::addRow("loopback only") << QList<NetworkAdapter>{{"00:00:00:00:00:00", true}} << "000000000000";
        QTest::addRow("loopback then ethernet")
            << QList<NetworkAdapter>{{"00:00:00:00:00:00", true}, {"52:54:00:12:34:56", false}} << "525400123456";
        QTest::addRow("tunnel without address is passed")
            << QList<NetworkAdapter>{{"", false}, {"aa:bb:cc:dd:ee:0f", false}} << "AABBCCDDEE0F";
        QTest::addRow("first wins")
            << QList<NetworkAdapter>{{"02:00:00:00:00:01", false}, {"02:00:00:00:00:02", false}} << "020000000001";
        QTest::addRow("long hardware address is passed")
            << QList<NetworkAdapter>{{"80:00:00:48:fe:80:00:00", false}} << "000000000000";
    }
    void firstAdapter()
    {
        QFETCH(QList<NetworkAdapter>, adapters);
        QTEST(FormatAddress(FirstAdapterAddress(adapters), ""), "address");
    }

    void machineKeyIsRecomputedAtEachStart()
    {
        SaveAppSetting("DefaultProc", "A KEY FROM ANOTHER ADAPTER", kSettings);
        const QString old = Encrypt("stored", "A KEY FROM ANOTHER ADAPTER");
        InitMachineKey();
        QVERIFY(QRegularExpression("^[0-9A-F]{12}$").match(GetMACAddress()).hasMatch());
        QCOMPARE(gstrMachineKey, Hash(GetMACAddress()));
        QCOMPARE(GetAppSetting("DefaultProc", kSettings), gstrMachineKey);
        // A value stored under the old key stays closed to the new one.
        DialogAnswerer answers;
        QVERIFY(Decrypt(old, gstrMachineKey) != "stored");
    }
};

QTEST_MAIN(tst_Encryption)
#include "tst_encryption.moc"
