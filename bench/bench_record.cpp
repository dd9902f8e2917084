// Recording in the main window: what one tick of the recorder's timer costs
// (two level bars and the running time, painted), and the time from the stop
// of a 60-second take to the take drawn in the editor. Both record from a
// private sound server's null sink.
#include "Bench.h"
#include "core/modCommon.h"
#include "editing/CAudioRecorder.h"
#include "editing/frmMain.h"
#include "platform/AudioEditor2.h"
#include "platform/NCTAmpBar2.h"
#include "platform/NCTAudioRecord2.h"
#include "skin/CSkinWindow.h"
#include "support/MainWindowFixture.h"
#include "support/PulseServer.h"
#include "support/TestGround.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

namespace {
// One for the run: the sound backend connects once per process.
PulseServer& pulse()
{
    static PulseServer server;
    return server;
}

// A main window of its own, on a scratch ground, with a sound server to record from.
struct RecordGround {
    TestGround ground;
    MainWindowFixture<frmMain> mainWindow{MainForm, DropMainForm};
    frmMain* form = nullptr;

    RecordGround()
    {
        pulse();
        form = &mainWindow.Load();
        form->show();
    }
    bool Ready() const { return pulse().Started() && form->mobjRecord; }

    // Rec twice, frmStartRecording answered as it shows.
    void startTake()
    {
        QTimer answerer;
        QObject::connect(&answerer, &QTimer::timeout, [] {
            if (auto* window = qobject_cast<CSkinWindow*>(QApplication::activeModalWidget()))
                window->Hide();
        });
        answerer.start(1);
        form->mbRecordMode = true;
        form->ApplyWindowMode();
        form->StartRecordingNow();
    }
};

void wait(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

const bool levelTick = RegisterBench(QStringLiteral("Record_LevelBarsPerTick"), [] {
    RecordGround ground;
    if (!ground.Ready())
        return BenchFigure{-1, QStringLiteral("ms")};
    ground.startTake();
    auto* recorder = ground.form->mobjRecord->findChild<NCTAudioRecord2*>();
    recorder->Stop();  // its own ticks would mix with the measured ones
    int64_t samples = 0;
    const int ticks = 500;
    const double total = MedianMilliseconds(5, [&] {
        for (int i = 0; i < ticks; ++i) {
            samples += 4410;
            emit recorder->Timer(samples, 20 + i % 60, 80 - i % 60);
            QCoreApplication::processEvents();  // the bars and the time label paint
        }
    });
    ground.form->StopRecordingNow(true);
    return BenchFigure{total / ticks, QStringLiteral("ms (target well under 1)")};
});

const bool stopToDrawn = RegisterBench(QStringLiteral("Record_Stop60sTakeToDrawn"), [] {
    RecordGround ground;
    if (!ground.Ready())
        return BenchFigure{-1, QStringLiteral("ms")};
    ground.startTake();
    wait(60000);
    QElapsedTimer clock;
    clock.start();
    ground.form->StopRecordingNow(false);
    ground.form->AudioEditor21->repaint();
    const double drawn = clock.nsecsElapsed() / 1e6;
    const bool whole = ground.form->AudioEditor21->TotalSamples() >= 55 * 44100;  // the take starts a little after the wait
    return BenchFigure{whole ? drawn : -1, QStringLiteral("ms (target <= 150)")};
});
}  // namespace
