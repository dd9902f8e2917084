#include "core/CError.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modEncryption.h"
#include "core/seams.h"
#include "delivery/CQueueManager.h"
#include "delivery/ToneFormats.h"
#include "delivery/ToneSizeLimit.h"
#include "delivery/ToneUpload.h"
#include "delivery/frmUploadingTone.h"
#include "service/CHTTPCall.h"
#include "skin/ControlTag.h"
#include "support/DialogAnswerer.h"
#include "support/Files.h"
#include "support/TestGround.h"

#include <QApplication>
#include <QDomDocument>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QSettings>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QTest>
#include <memory>

class tst_Delivery : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;

    QString makeTone(const QString& name)
    {
        const QString path = ground->programFolder() + "/" + name;
        WriteFile(path, "#!AMR\n");
        return path;
    }
    void logIn()
    {
        gstrMachineKey = Hash("525400123456");
        gstrMobileNumber = "0412345678";
        gstrPassword = Encrypt("pa\"ss&<w>", gstrMachineKey);
    }
    QStringList toneDataKeys()
    {
        QSettings s(SettingsFilePath(), QSettings::IniFormat);
        s.beginGroup("ToneData");
        return s.childKeys();
    }

private slots:
    void init() { ground = std::make_unique<TestGround>(); }
    void cleanup() { ground.reset(); }

    void formats_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("ext");
        QTest::addRow("AMR Narrowband") << "AMR Narrowband" << 1 << "preview.amr" << "audio/amr" << "amr";
        QTest::addRow("MP3") << "MP3" << 5 << "preview1.mp3" << "audio/mpeg" << "mp3";
        QTest::addRow("AAC") << "AAC" << 4 << "preview.aac" << "audio/aac" << "aac";
        QTest::addRow("QCELP") << "QCELP" << 3 << "preview.qcp" << "audio/qcelp" << "qcp";
        QTest::addRow("lower case falls back") << "amr narrowband" << 1 << "preview.amr" << "audio/amr" << "amr";
        QTest::addRow("empty") << "" << 1 << "preview.amr" << "audio/amr" << "amr";
        QTest::addRow("padded") << "MP3 " << 1 << "preview.amr" << "audio/amr" << "amr";
    }
    void formats()
    {
        QFETCH(QString, word);
        QFETCH(QString, name);
        const ToneFormat& f = ToneFormatFor(word);
        QTEST(f.preferredFormat, "number");
        QCOMPARE(ConvertedFilePath(f), ground->tempFolder() + "/" + name);
        QTEST(f.contentType, "type");
        QTEST(f.extension, "ext");
    }

    void limit_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<qint64>("limit");  // -1: none
        QTest::addRow("50 KB") << "50 KB" << qint64(51200);
        QTest::addRow("Unlimited") << "Unlimited" << qint64(-1);
        QTest::addRow("absent") << "" << qint64(150000);
        QTest::addRow("case counts") << "unlimited" << qint64(150000);
        QTest::addRow("no blank") << "150KB" << qint64(150000);
    }
    void limit()
    {
        QFETCH(QString, setting);
        QTEST(qint64(MaxToneSizeLimit(setting).value_or(-1)), "limit");
    }

    void toneSizeLimit_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<QString>("answer");  // empty: no dialog expected
        QTest::addColumn<bool>("goOn");
        QTest::addRow("over 150 KB, give up") << "150 KB" << 200000 << "imgOK" << false;
        QTest::addRow("over 150 KB, send anyway") << "150 KB" << 200000 << "imgCancel" << true;
        QTest::addRow("at the default") << "" << 150000 << "" << true;
        QTest::addRow("150 KB is more than the default") << "150 KB" << 153600 << "" << true;
    }
    void toneSizeLimit()
    {
        QFETCH(QString, setting);
        QFETCH(int, bytes);
        QFETCH(QString, answer);
        QFETCH(bool, goOn);
        SaveAppSetting("MaxToneSize", setting, kSettings);
        const QString tone = ground->programFolder() + "/20261123101010.amr";
        WriteFile(tone, QByteArray(bytes, 'x'));
        DialogAnswerer answers;
        QString sizeShown;
        if (!answer.isEmpty()) {
            answers.answer("frmToneTooBig", answer);
            QTimer::singleShot(0, this, [&] {
                if (auto* w = QApplication::activeModalWidget())
                    sizeShown = ControlTag(w->findChild<QObject*>("lblTooBig"));
            });
        }
        bool result = !goOn;
        CheckToneSize(tone, result);
        QCOMPARE(result, goOn);
        QVERIFY2(answers.finishedCleanly(), qPrintable(answers.problems()));
        if (!answer.isEmpty())
            QCOMPARE(sizeShown, QString::number(bytes));
    }

    void toneDataFields_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<QList<int>>("fieldLengths");
        QTest::addRow("empty tone") << 0 << QList<int>{0};
        QTest::addRow("one byte") << 1 << QList<int>{2};
        QTest::addRow("exactly one field") << 16380 << QList<int>{32760};
        QTest::addRow("one byte over") << 16381 << QList<int>{32760, 2};
        QTest::addRow("two whole fields") << 32760 << QList<int>{32760, 32760};
    }
    void toneDataFields()
    {
        QFETCH(int, bytes);
        QFETCH(QList<int>, fieldLengths);
        QString hex;
        for (int i = 0; i < 2 * bytes; ++i)
            hex += QChar(u"0123456789ABCDEF"[i % 16]);
        const QString body = ToneDataFields(hex);
        QVERIFY(!body.endsWith('&'));
        const QStringList fields = body.split('&');
        QCOMPARE(fields.size(), fieldLengths.size());
        QString joined;
        for (int i = 0; i < fields.size(); ++i) {
            const QString prefix = QString("tonedata%1=").arg(i + 1);
            QVERIFY(fields[i].startsWith(prefix));
            QCOMPARE(fields[i].size() - prefix.size(), fieldLengths[i]);
            joined += fields[i].mid(prefix.size());
        }
        QCOMPARE(joined, hex);  // the service puts them back in the order of N
    }

    void uploadBody()
    {
        logIn();
        const QString body = BuildUploadBody("<Message A=\"1 2\"/>\n", "0A0B");
        QCOMPARE(body, QString("MobileNumber=0412345678&Password=pa\"ss&<w>&xmldata=%3CMessage+A%3D%221+2%22%2F%3E%0A&tonedata1=0A0B"));
    }

    void uploadReply_data()
    {
        QTest::addColumn<QString>("reply");
        QTest::addColumn<bool>("endsLoop");
        QTest::addRow("delivered") << "1,OK,https://svc/t/1.amr" << true;
        QTest::addRow("http too") << "1,OK,http://svc/t/1.amr" << true;
        QTest::addRow("refused") << "0,Error,No credit" << false;
        QTest::addRow("third field HTTP in capitals") << "1,OK,HTTPS://x" << false;
        QTest::addRow("leading blank") << "1,OK, https://x" << false;
        QTest::addRow("empty reply counts as delivered") << "" << true;
        QTest::addRow("two fields") << "0,Error" << true;
        QTest::addRow("more fields") << "1,OK,https://x,extra" << true;
        QTest::addRow("empty third") << "1,OK," << false;
    }
    void uploadReply()
    {
        QFETCH(QString, reply);
        QTEST(UploadReplyEndsLoop(reply), "endsLoop");
    }

    void saveData_record_data()
    {
        QTest::addColumn<bool>("tunnel");
        QTest::addRow("direct road stores nothing") << false;
        QTest::addRow("tunnel road stores mark and record") << true;
    }
    void saveData_record()
    {
        QFETCH(bool, tunnel);
        logIn();
        gbUseTunnel = tunnel;
        seams().now = [] { return QDateTime(QDate(2005, 3, 3), QTime(14, 7, 9)); };
        const QString tone = makeTone("20050303140709.amr");
        CQueueManager queue;
        QVERIFY(!queue.IsDataFilePending());
        const QString xml = queue.SaveData("audio/amr", tone, gstrMobileNumber, gstrPassword);

        QDomDocument doc;
        QVERIFY(doc.setContent(xml));
        const QDomElement m = doc.documentElement();
        QCOMPARE(m.tagName(), QString("Message"));
        QCOMPARE(m.attribute("ContentType"), QString("audio/amr"));
        QCOMPARE(m.attribute("Filename"), QString("20050303140709.amr"));
        QCOMPARE(Decrypt(m.attribute("QueueIdentifier"), gstrMachineKey), gstrMobileNumber);
        QCOMPARE(m.attribute("QueueData"), gstrPassword);
        QCOMPARE(m.attribute("Created"), DefaultDateTimeText(seams().now()));
        QCOMPARE(m.attribute("Status"), QString("Ready"));
        QCOMPARE(m.attribute("MobileNumber"), gstrMobileNumber);
        QCOMPARE(m.attribute("Password"), QString("pa\"ss&<w>"));
        QVERIFY(xml.contains("&quot;"));
        // The attributes stand in the order the helper reads them.
        const QRegularExpression order(
            "^<Message ContentType=\\S+ Filename=\\S+ QueueIdentifier=\\S+ QueueData=\\S+ Created=\".*\" "
            "Status=\\S+ MobileNumber=\\S+ Password=\\S+/>\\s*$");
        QVERIFY2(order.match(xml).hasMatch(), qPrintable(xml));

        if (tunnel) {
            const QString hash = Hash(xml);
            QCOMPARE(GetAppSetting("CurrentTone", kToneData), hash);
            QCOMPARE(GetAppSetting(hash, kToneData), xml.trimmed());
            QVERIFY(queue.IsDataFilePending());
        } else {
            QVERIFY(toneDataKeys().isEmpty());
            QVERIFY(!queue.IsDataFilePending());
        }
    }

    void saveData_missingFileWritesNothing()
    {
        logIn();
        gbUseTunnel = true;
        CQueueManager queue;
        try {
            queue.SaveData("audio/amr", ground->programFolder() + "/gone.amr", gstrMobileNumber, gstrPassword);
            QFAIL("no failure raised");
        } catch (const CError& e) {
            QCOMPARE(e.Description(), QString("File not found"));
        }
        QVERIFY(toneDataKeys().isEmpty());
    }

    void uploadingWindowAnimatesWhileTheCallBlocks()
    {
        // A page that answers only after a while, as a slow upload does.
        QTcpServer page;
        QVERIFY(page.listen(QHostAddress::LocalHost));
        connect(&page, &QTcpServer::newConnection, this, [&page] {
            QTcpSocket* client = page.nextPendingConnection();
            QTimer::singleShot(1500, client, [client] {
                client->write("HTTP/1.1 200 OK\r\nContent-Length: 5\r\nConnection: close\r\n\r\n1,0,0");
                client->disconnectFromHost();
            });
        });
        // The second send of a run: the window is there from the first when the owner is disabled.
        QWidget owner;
        frmUploadingTone& uploading = UploadingToneWindow(&owner);
        uploading.Show(false);
        SetFormEnabled(&owner, false);
        const int16_t before = uploading.Frame();
        QSet<int16_t> frames;
        QTimer look;
        connect(&look, &QTimer::timeout, this, [&] { frames << uploading.Frame(); });
        look.start(50);
        const QString reply = CHTTPCall().SendHTTP(QString("http://127.0.0.1:%1/SendT2.asp").arg(page.serverPort()),
                                                   false, "x=1", QString(), 10000);
        QCOMPARE(reply, QString("1,0,0"));
        QVERIFY(uploading.isEnabled());
        frames.remove(before);
        QVERIFY2(frames.size() >= 2, "the animation stood still");
        SetFormEnabled(&owner, true);
    }
};

QTEST_MAIN(tst_Delivery)
#include "tst_delivery.moc"
