#include "core/MainWindow.h"
#include "core/modCommon.h"
#include "core/seams.h"
#include "skin/CDialog.h"
#include "skin/CPictureButton.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/frmMessage.h"
#include "skin/modWindowDrag.h"
#include "support/QuietOffscreen.h"
#include "support/TestGround.h"

#include <QApplication>
#include <QBitmap>
#include <QLabel>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <memory>
#include <stdexcept>

namespace {
// A plain skinned window with two buttons, as a window of the program builds one.
class frmTwoButtons : public CSkinWindow {
public:
    frmTwoButtons() : CSkinWindow(QStringLiteral("frmTwoButtons")) {}
    bool busy = false;
    int released = 0;

protected:
    void Form_Load() override
    {
        SkinWindowDesc desc;
        desc.heading = QStringLiteral("Two buttons");
        desc.buttons = {{QStringLiteral("cmdA"), QStringLiteral("A")},
                        {QStringLiteral("cmdB"), QStringLiteral("B"), ButtonLook::Secondary}};
        Build(desc);
        connect(Button(QStringLiteral("cmdA")), &CPictureButton::Released, this, [this] { ++released; });
    }
    bool DragAllowed() const override { return !busy; }
};

QPoint centreOf(QWidget* w)
{
    return w->geometry().center();
}

// Mouse presses go through the window system, as the desktop's do, so that
// they reach the control under the mouse and the release goes to the pressed one.
QWindow* handle(QWidget* window)
{
    window->winId();
    return window->windowHandle();
}

bool lit(CPictureButton* b)
{
    return !b->pixmap().isNull();
}

// A point of the body: inside the card, on no control.
QPoint bodyPoint(QWidget* window)
{
    return QPoint(20, window->height() / 2);
}
}  // namespace

class tst_Skin : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;

private slots:
    void initTestCase() { QuietOffscreenPlugin(); }
    void init() { ground = std::make_unique<TestGround>(); }
    void cleanup() { ground.reset(); }

    // What each button and key of a message window answers, and whether the
    // window is then hidden, unloaded or still up: one window of each kind
    // of row (the wording of each window's answers is met end to end where
    // it is used).
    void catalogue_answers_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QString>("outcome");
        for (const char* action : {"imgOK", "Enter", "Escape"})
            QTest::addRow("notice %s", action) << "frmNoToneSelected" << action << "" << "hidden";
        QTest::addRow("notice body") << "frmNoToneSelected" << "body" << "-" << "stays";
        QTest::addRow("frmSent body") << "frmSent" << "body" << "-" << "unloaded";
        QTest::addRow("frmAnnouncements body") << "frmAnnouncements" << "body" << "-" << "unloaded";
        QTest::addRow("question imgOK") << "frmConfirmExit" << "imgOK" << "" << "hidden";
        QTest::addRow("question imgCancel") << "frmConfirmExit" << "imgCancel" << "Q" << "hidden";
        for (const char* action : {"Enter", "Escape", "body"})
            QTest::addRow("question %s", action) << "frmConfirmExit" << action << "-" << "stays";
        QTest::addRow("yes and no: imgNo") << "frmConfirmDeleteTone" << "imgNo" << "Q" << "hidden";
        QTest::addRow("OK stops: imgOK") << "frmCancelRip" << "imgOK" << "Q" << "hidden";
        QTest::addRow("OK stops: imgCancel") << "frmCancelRip" << "imgCancel" << "" << "hidden";
        QTest::addRow("keys: Enter") << "frmAboutToUseFreeQuill" << "Enter" << "" << "hidden";
        QTest::addRow("keys: Escape cancels") << "frmAboutToUseFreeQuill" << "Escape" << "Q" << "hidden";
        QTest::addRow("keys: Escape agrees") << "frmCharged" << "Escape" << "" << "hidden";
        QTest::addRow("delete: imgDelete") << "frmTonePending" << "imgDelete" << "Q" << "hidden";
        for (const char* action : {"Enter", "Escape", "body"})
            QTest::addRow("frmCCDBWait %s", action) << "frmCCDBWait" << action << "-" << "stays";
    }
    void catalogue_answers()
    {
        QFETCH(QString, window);
        QFETCH(QString, action);
        QFETCH(QString, outcome);

        auto dlg = MessageWindow(window);
        QVERIFY(dlg);
        dlg->Load();
        dlg->Show(false);
        QVERIFY(QTest::qWaitForWindowExposed(dlg.get()));
        dlg->Tag = "-";  // an answer must write it; doing nothing leaves it

        if (action == "Enter") {
            QTest::keyClick(dlg.get(), Qt::Key_Return);
        } else if (action == "Escape") {
            QTest::keyClick(dlg.get(), Qt::Key_Escape);
        } else if (action == "body") {
            QTest::mouseClick(handle(dlg.get()), Qt::LeftButton, {}, bodyPoint(dlg.get()));
        } else {
            CPictureButton* button = dlg->Button(action);
            QVERIFY(button);
            QTest::mouseClick(handle(dlg.get()), Qt::LeftButton, {}, centreOf(button));
        }

        QCOMPARE(dlg->IsLoaded(), outcome != "unloaded");
        QCOMPARE(dlg->isVisible(), outcome == "stays");
        if (outcome != "unloaded")
            QTEST(dlg->Tag, "tag");
        dlg->Unload();
    }

    // Every window of the catalogue is built in catalogue_centring.
    void catalogue_unknownNameIsRefused()
    {
        QVERIFY(!MessageWindow("frmNoSuchWindow"));
        QVERIFY_THROWS_EXCEPTION(std::invalid_argument, ShowMessageWindow("frmNoSuchWindow"));
    }

    void catalogue_centring_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<bool>("onScreen");
        for (const QString& name : MessageWindowNames()) {
            const bool screen = name == "frmInvalidCaptchaCode" || name == "frmActivationCodeCancelled" ||
                                name == "frmAnnouncements";
            QTest::addRow("%s", qPrintable(name)) << name << screen;
        }
    }
    void catalogue_centring()
    {
        QFETCH(QString, window);
        QFETCH(bool, onScreen);
        QWidget main;
        main.setGeometry(40, 60, 700, 500);
        SetMainWindow([&main] { return &main; });

        auto dlg = MessageWindow(window);
        dlg->Load();
        const QRect area = onScreen ? QApplication::primaryScreen()->geometry() : main.geometry();
        QVERIFY(qAbs(dlg->geometry().center().x() - area.center().x()) <= 1);
        QVERIFY(qAbs(dlg->geometry().center().y() - area.center().y()) <= 1);
    }

    // Every pure-blue pixel of a face is a hole and nothing else is.
    void holes_areExactlyTheKeyBlue_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addRow("question") << "frmConfirmExit";
        QTest::addRow("notice with a text box") << "frmAnnouncements";
        QTest::addRow("no buttons") << "frmCCDBWait";
    }
    void holes_areExactlyTheKeyBlue()
    {
        QFETCH(QString, window);
        auto dlg = MessageWindow(window);
        dlg->Load();
        const QImage face = dlg->grab().toImage().convertToFormat(QImage::Format_RGB32);
        const QRegion shape = dlg->mask();
        QVERIFY(!shape.isEmpty());
        int holes = 0;
        for (int y = 0; y < face.height(); ++y) {
            for (int x = 0; x < face.width(); ++x) {
                const bool blue = face.pixel(x, y) == qRgb(0, 0, 255);
                holes += blue;
                if (shape.contains(QPoint(x, y)) == blue)
                    QFAIL(qPrintable(QString("pixel %1,%2").arg(x).arg(y)));
            }
        }
        // The rounded corners and the sides of the badge at least.
        QVERIFY(holes > 500);
        QVERIFY(!shape.contains(QPoint(0, 0)));
        QVERIFY(!shape.contains(QPoint(dlg->width() - 1, dlg->height() - 1)));
        QCOMPARE(dlg->windowOpacity(), 1.0);  // the alpha it is given has no effect with the colour key alone
    }

    void rollover_onlyOneLitAndTheBodyClearsAll()
    {
        frmTwoButtons w;
        w.Show(false);
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        CPictureButton* a = w.Button("cmdA");
        CPictureButton* b = w.Button("cmdB");

        QTest::mouseMove(handle(&w), centreOf(a));
        QVERIFY(lit(a) && !lit(b));
        QCOMPARE(a->pixmap().toImage(), a->OverTwin()->pixmap().toImage());
        // Straight from one to the other: only the second stays lit.
        QTest::mouseMove(handle(&w), centreOf(b));
        QVERIFY(!lit(a) && lit(b));
        QTest::mouseMove(handle(&w), bodyPoint(&w));
        QVERIFY(!lit(a) && !lit(b));

        QTest::mouseMove(handle(&w), centreOf(a));
        QTest::mousePress(handle(&w), Qt::LeftButton, {}, centreOf(a));
        QCOMPARE(a->pixmap().toImage(), a->ClickedTwin()->pixmap().toImage());
        QTest::mouseRelease(handle(&w), Qt::LeftButton, {}, centreOf(a));
        QCOMPARE(w.released, 1);
    }

    void release_actsWhereverTheMouseWent()
    {
        auto dlg = MessageWindow("frmConfirmExit");
        dlg->Load();
        CPictureButton* cancel = dlg->Button("imgCancel");
        QTimer::singleShot(0, dlg.get(), [&] {
            QTest::mousePress(handle(dlg.get()), Qt::LeftButton, {}, centreOf(cancel));
            QTest::mouseMove(handle(dlg.get()), bodyPoint(dlg.get()));
            QTest::mouseRelease(handle(dlg.get()), Qt::LeftButton, {}, bodyPoint(dlg.get()));
        });
        dlg->Show(true);
        QCOMPARE(dlg->Tag, QString("Q"));
        QVERIFY(!dlg->isVisible());
        QVERIFY(!lit(cancel));
    }

    void drag_movesByTheOutlineAndNotWhileBusy_data()
    {
        QTest::addColumn<bool>("busyAtPress");
        QTest::addColumn<bool>("busy");  // from the first move on
        QTest::addRow("idle") << false << false;
        QTest::addRow("busy") << true << true;
        QTest::addRow("busy once pressed") << false << true;
    }
    void drag_movesByTheOutlineAndNotWhileBusy()
    {
        QFETCH(bool, busyAtPress);
        QFETCH(bool, busy);
        frmTwoButtons w;
        w.SetDraggable(true);
        w.busy = busyAtPress;
        w.Load();
        w.move(100, 100);
        w.Show(false);
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        const QRect start = w.geometry();

        QTest::mousePress(handle(&w), Qt::LeftButton, {}, QPoint(20, 150));
        w.busy = busy;
        QTest::mouseMove(handle(&w), QPoint(50, 170));
        QCOMPARE(DragOutline(), busyAtPress ? QRect() : busy ? start : start.translated(30, 20));
        QCOMPARE(w.geometry(), start);  // only the outline moves until the release
        QTest::mouseRelease(handle(&w), Qt::LeftButton, {}, QPoint(50, 170));
        QCOMPARE(DragOutline(), QRect());
        QCOMPARE(w.geometry(), busy ? start : start.translated(30, 20));
    }

    void cdialog_modalRestoresThePointer_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addRow("Enter") << "Enter";
        QTest::addRow("release on picOKOver") << "picOKOver";
    }
    void cdialog_modalRestoresThePointer()
    {
        QFETCH(QString, how);
        SetMousePointer(vbHourglass);
        CDialog dlg;
        QString shown;
        int pointerWhileUp = -1;
        QTimer::singleShot(0, [&] {
            frmGenericOKDialog* w = dlg.Window();
            shown = w->Label("lblMessage")->text();
            pointerWhileUp = MousePointer();
            QVERIFY(w->isVisible() && w->Label("picOK")->isVisible());
            if (how == "Enter") {
                QTest::keyClick(w, Qt::Key_Return);
            } else {
                w->Label("picOKOver")->show();
                QTest::mouseClick(handle(w), Qt::LeftButton, {}, centreOf(w->Label("picOKOver")));
            }
        });
        dlg.Display("Send: no connection", true, nullptr);
        QCOMPARE(shown, QString("Send: no connection"));
        QCOMPARE(pointerWhileUp, int(vbDefault));
        QCOMPARE(MousePointer(), int(vbHourglass));
        QVERIFY(!dlg.Window());
        SetMousePointer(vbDefault);
    }

    void cdialog_noticeHasNoButtonAndHideFormIsHarmless()
    {
        QWidget owner;
        owner.setGeometry(100, 100, 600, 400);
        owner.show();
        CDialog dlg;
        dlg.Display("Making your tone", false, &owner);
        frmGenericOKDialog* w = dlg.Window();
        QVERIFY(w && w->isVisible());
        QCOMPARE(w->parentWidget(), &owner);
        QVERIFY(w->isWindow());
        QVERIFY(!w->Label("picOK")->isVisible());
        QVERIFY(!w->findChild<QTimer*>("Timer1")->isActive());

        dlg.Update("Making your tone (50%)");
        QCOMPARE(w->Label("lblMessage")->text(), QString("Making your tone (50%)"));
        // Esc closes the notice under its caller's feet; the caller's HideForm still works.
        QTest::keyClick(w, Qt::Key_Escape);
        QVERIFY(!w->isVisible());
        dlg.HideForm();
        QVERIFY(!dlg.Window());
        dlg.HideForm();
    }
};

QTEST_MAIN(tst_Skin)
#include "tst_skin.moc"
