#include "platform/AudioEditor2.h"
#include "platform/ZeroCrossing.h"
#include "support/SoundFiles.h"
#include "support/TestGround.h"

#include <QAction>
#include <QMenu>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>
#include <memory>

// The editor's keys, wheel, pointer and context menu, by synthesized events
// on a real file; and where the marks snap to.
class tst_EditorInput : public QObject {
    Q_OBJECT
    std::unique_ptr<TestGround> ground;
    QString song;  // 10 s of 100 Hz at 8 kHz: a zero crossing every 40 samples, half a 5 ms reach apart
    std::vector<int16_t> samples;

    QAction* entry(AudioEditor2& editor, const QString& text)
    {
        for (QAction* action : editor.findChild<QMenu*>("mnuEditor")->actions()) {
            if (action->text() == text)
                return action;
        }
        return nullptr;
    }
    void open(AudioEditor2& editor)
    {
        editor.resize(400, 80);
        editor.OpenFile(song);
    }
    void wheel(AudioEditor2& editor, int x, int notches)
    {
        QWheelEvent event(QPointF(x, 40), editor.mapToGlobal(QPointF(x, 40)), {}, QPoint(0, 120 * notches),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&editor, &event);
    }

private slots:
    void initTestCase()
    {
        ground = std::make_unique<TestGround>();
        song = MakeTone(ground->tempFolder() + "/hundred.wav", 10.0, 100, 8000, 1);
        QVERIFY(!song.isEmpty());
        samples = DecodeMono(song, 8000);
    }

    // Each key with the focus, and the context menu's entry that shows it.
    void keys_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<int>("hoverX");  // -1: the pointer is away, the cursor decides
        QTest::addColumn<int>("cursor");
        QTest::addColumn<QList<int>>("expected");  // start, end, cursor, shown start, shown end
        const int none = Qt::NoModifier, shift = Qt::ShiftModifier;
        QTest::addRow("Right: the start, nearer to the cursor") << "Nearer mark 0.1 s later" << int(Qt::Key_Right) << none << -1 << 0
                                                                 << QList<int>{16800, 48000, 0, 24000, 44000};
        QTest::addRow("Left: the end, nearer to the cursor") << "Nearer mark 0.1 s earlier" << int(Qt::Key_Left) << none << -1 << 60000
                                                              << QList<int>{16000, 47200, 60000, 24000, 44000};
        QTest::addRow("Shift+Right: the end, nearer to the pointer") << "Nearer mark 1 s later" << int(Qt::Key_Right) << shift << 250 << 0
                                                                      << QList<int>{16000, 56000, 0, 24000, 44000};
        QTest::addRow("Shift+Left: the start, nearer to the pointer") << "Nearer mark 1 s earlier" << int(Qt::Key_Left) << shift << 10 << 60000
                                                                       << QList<int>{8000, 48000, 60000, 24000, 44000};
        QTest::addRow("Home: the cursor to the start") << "Go to the start" << int(Qt::Key_Home) << none << -1 << 30000
                                                       << QList<int>{16000, 48000, 0, 24000, 44000};
        QTest::addRow("End: the cursor to the end") << "Go to the end" << int(Qt::Key_End) << none << -1 << 30000
                                                    << QList<int>{16000, 48000, 80000, 24000, 44000};
        QTest::addRow("+: half the span, round the marks") << "Zoom in" << int(Qt::Key_Plus) << none << -1 << 0
                                                           << QList<int>{16000, 48000, 0, 27000, 37000};
        QTest::addRow("-: twice the span, within the sound") << "Zoom out" << int(Qt::Key_Minus) << none << -1 << 0
                                                             << QList<int>{16000, 48000, 0, 12000, 52000};
    }
    void keys()
    {
        QFETCH(QString, entry);
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(int, hoverX);
        QFETCH(int, cursor);
        QFETCH(QList<int>, expected);
        AudioEditor2 editor;
        open(editor);
        editor.SetSnapToZero(false);  // exact steps here; the snap has its own case
        editor.SetSelectionStart(16000);
        editor.SetSelectionEnd(48000);
        editor.SetPlayPosition(cursor);
        editor.ZoomAround(32000, 0.25);  // 24000 to 44000 on show
        if (hoverX >= 0) {
            QMouseEvent hover(QEvent::MouseMove, QPointF(hoverX, 40), editor.mapToGlobal(QPointF(hoverX, 40)),
                              Qt::NoButton, Qt::NoButton, Qt::NoModifier);
            QCoreApplication::sendEvent(&editor, &hover);
        }
        QTest::keyClick(&editor, Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        QCOMPARE((QList<int>{editor.SelectionStart(), editor.SelectionEnd(), editor.PlayPosition(), editor.ShownStart(),
                             editor.ShownEnd()}),
                 expected);
        // The range Trim set and a trimmed send reads is the keys' to show, not to change.
        QCOMPARE(editor.ViewStart(), 0);
        QCOMPARE(editor.ViewEnd(), 80000);
        QAction* action = this->entry(editor, entry);
        QVERIFY(action);
        QCOMPARE(action->shortcut(), QKeySequence(QKeyCombination(Qt::KeyboardModifiers(modifiers), Qt::Key(key))));
    }

    // Space asks the window to play or stop; Enter stays in the editor, so
    // no default button of the window ever sees it.
    void spaceAsksEnterStays()
    {
        QWidget window;
        auto* editor = new AudioEditor2(&window);
        open(*editor);
        QSignalSpy wanted(editor, &AudioEditor2::PlayStopWanted);
        int keysSeenByWindow = 0;
        struct Counter : QObject {
            int& seen;
            explicit Counter(int& s) : seen(s) {}
            bool eventFilter(QObject*, QEvent* e) override
            {
                seen += e->type() == QEvent::KeyPress;
                return false;
            }
        } counter(keysSeenByWindow);
        window.installEventFilter(&counter);
        QTest::keyClick(editor, Qt::Key_Space);
        QTest::keyClick(editor, Qt::Key_Return);
        QTest::keyClick(editor, Qt::Key_Enter, Qt::KeypadModifier);
        QCOMPARE(wanted.size(), 1);
        QCOMPARE(keysSeenByWindow, 0);
        QCOMPARE(entry(*editor, "Play or stop")->shortcut(), QKeySequence(Qt::Key_Space));
    }

    void wheelZoomsAroundThePointer()
    {
        AudioEditor2 editor;
        open(editor);
        wheel(editor, 100, 1);  // a quarter in: 20000 stays a quarter in
        QCOMPARE(editor.ShownEnd() - editor.ShownStart(), 64000);
        QCOMPARE(editor.ShownStart(), 4000);
        wheel(editor, 100, -1);
        QCOMPARE(editor.ShownStart(), 0);
        QCOMPARE(editor.ShownEnd(), 80000);
        for (int i = 0; i < 60; ++i)  // never narrower than a sample a pixel
            wheel(editor, 200, 1);
        QCOMPARE(editor.ShownEnd() - editor.ShownStart(), 400);
        QCOMPARE(editor.ViewEnd(), 80000);
    }

    // A drag from a mark's edge moves that mark only; past the other, it
    // becomes the other end.
    void edgeDragMovesOneMark_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("end");
        QTest::addRow("start edge later") << 80 << 120 << 24000 << 48000;   // x = sample * 400 / 80000
        QTest::addRow("end edge earlier") << 242 << 200 << 16000 << 40000;
        QTest::addRow("start edge past the end") << 78 << 300 << 48000 << 60000;
    }
    void edgeDragMovesOneMark()
    {
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(int, start);
        QFETCH(int, end);
        AudioEditor2 editor;
        open(editor);
        editor.SetSelectionStart(16000);
        editor.SetSelectionEnd(48000);
        // Alt holds the marks where the pointer leaves them.
        QTest::mousePress(&editor, Qt::LeftButton, Qt::AltModifier, QPoint(from, 40));
        QTest::mouseMove(&editor, QPoint((from + to) / 2, 40));
        QTest::mouseMove(&editor, QPoint(to, 40));
        QTest::mouseRelease(&editor, Qt::LeftButton, Qt::AltModifier, QPoint(to, 40));
        QCOMPARE(editor.SelectionStart(), start);
        QCOMPARE(editor.SelectionEnd(), end);
    }

    // Marks the user sets land on the nearest zero crossing within 5 ms;
    // Alt while dragging, the switch, and marks set in code, where they are put.
    void snap_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<bool>("snapped");
        QTest::addRow("dragged") << "drag" << true;
        QTest::addRow("dragged with Alt") << "alt" << false;
        QTest::addRow("moved by a key") << "key" << true;
        QTest::addRow("marked as the user would") << "mark" << true;
        QTest::addRow("snapping switched off") << "off" << false;
        QTest::addRow("set in code") << "code" << false;
    }
    void snap()
    {
        QFETCH(QString, how);
        QFETCH(bool, snapped);
        AudioEditor2 editor;
        open(editor);
        // 20020 and 60020 stand a quarter period after a crossing: at the crest.
        const int start = 20020, end = 60020;
        if (how == "drag" || how == "alt") {
            const Qt::KeyboardModifiers mods = how == "alt" ? Qt::AltModifier : Qt::NoModifier;
            editor.resize(8000, 80);  // ten samples a pixel
            QTest::mousePress(&editor, Qt::LeftButton, mods, QPoint(start / 10, 40));
            QTest::mouseMove(&editor, QPoint(start / 10 + 100, 40));
            QTest::mouseMove(&editor, QPoint(end / 10, 40));
            QTest::mouseRelease(&editor, Qt::LeftButton, mods, QPoint(end / 10, 40));
        } else if (how == "key") {
            editor.SetSnapToZero(false);
            editor.MarkPart(start - 800, end);
            editor.SetSnapToZero(true);
            QTest::keyClick(&editor, Qt::Key_Right);  // the start, 0.1 s on
        } else {
            editor.SetSnapToZero(how != "off");
            if (how == "code") {
                editor.SetSelectionStart(start);
                editor.SetSelectionEnd(end);
            } else {
                editor.MarkPart(start, end);
            }
        }
        QVERIFY(std::abs(editor.SelectionStart() - start) <= 40);
        QVERIFY(std::abs(editor.SelectionEnd() - end) <= 40);
        const int first = samples[editor.SelectionStart()], last = samples[editor.SelectionEnd() - 1];
        // A crossing's two sides are within one step of a 100 Hz wave of ~4000 at 8 kHz.
        if (snapped) {
            QVERIFY2(std::abs(first) < 350 && std::abs(last) < 350, qPrintable(QString("%1 %2").arg(first).arg(last)));
        } else {
            QVERIFY2(std::abs(first) > 3000 && std::abs(last) > 3000, qPrintable(QString("%1 %2").arg(first).arg(last)));
        }
    }

    void zeroCrossingRule_data()
    {
        QTest::addColumn<QList<int>>("samples");
        QTest::addColumn<int>("centre");
        QTest::addColumn<int>("expected");
        QTest::addRow("at the centre") << QList<int>{5, 3, 0, 4, 6} << 2 << 2;
        QTest::addRow("the quieter side of a change") << QList<int>{9, 7, 2, -5, -9} << 0 << 2;
        QTest::addRow("the nearer of two") << QList<int>{-3, 4, 9, 9, 9, 5, -1} << 5 << 6;
        QTest::addRow("a tie goes earlier") << QList<int>{-1, 4, 9, 4, -1} << 2 << 0;
        QTest::addRow("none") << QList<int>{3, 4, 9, 4, 3} << 2 << -1;
        QTest::addRow("empty") << QList<int>{} << 0 << -1;
    }
    void zeroCrossingRule()
    {
        QFETCH(QList<int>, samples);
        QFETCH(int, centre);
        QFETCH(int, expected);
        const std::vector<int32_t> run(samples.begin(), samples.end());
        QCOMPARE(NearestZeroCrossing(run, centre), expected);
    }
};

QTEST_MAIN(tst_EditorInput)
#include "tst_editorinput.moc"
