#include "cd/frmRipping.h"

#include "cd/CDManager.h"
#include "cd/CDTrack.h"
#include "core/CError.h"
#include "core/MsgBox.h"
#include "core/modCommon.h"
#include "core/numbers.h"
#include "core/twips.h"
#include "platform/NCTAudioCDGrabber2.h"
#include "skin/CDialog.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/CPictureButton.h"
#include "skin/SkinStyle.h"
#include "skin/frmMessage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPainter>
#include <QTimer>

namespace {
constexpr int kFrames = 8;
constexpr double kBarTwips = 2370;
const QSize kDiscSize(48, 48);
const QRect kBarRect(121, 130, 0, 16);  // the width grows with the rip

// A disc turning: its light sector steps an eighth round each frame.
QPixmap paintDisc(int frame)
{
    QImage image(kDiscSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF disc(2, 2, kDiscSize.width() - 4, kDiscSize.height() - 4);
    p.setPen(QPen(QColor(0x7B, 0x61, 0xD9), 2));
    p.setBrush(QColor(0xB9, 0xA8, 0xF0));
    p.drawEllipse(disc);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0xFF, 0x7A, 0x59));
    p.drawPie(disc, -frame * 45 * 16, 45 * 16);
    p.setBrush(Qt::white);
    p.drawEllipse(disc.center(), 6, 6);
    return QPixmap::fromImage(image);
}
}  // namespace

frmRipping::frmRipping() : CSkinWindow(QStringLiteral("frmRipping"))
{
    tmrStartRip = new QTimer(this);
    tmrStartRip->setObjectName(QStringLiteral("tmrStartRip"));
    tmrStartRip->setInterval(1000);
    connect(tmrStartRip, &QTimer::timeout, this, &frmRipping::tmrStartRip_Timer);
}

frmRipping::~frmRipping() = default;

void frmRipping::Form_Load()
{
    SkinWindowDesc desc;
    desc.name = objectName();
    desc.size = QSize(400, 250);
    desc.heading = QStringLiteral("Copying your track");
    desc.body = QStringLiteral("Quillotone is copying the track from your CD. It will be in the editor in a moment.");
    desc.bodyRect = QRect(28, 64, 344, 50);
    const int barWidth = TwipsToPixelsX(kBarTwips);
    desc.labels = {{QStringLiteral("lblPercentage"), QRect(121 + barWidth + 8, 128, 60, 20), LabelKind::Text,
                    QStringLiteral("0%"), 10, true, Qt::AlignLeft | Qt::AlignVCenter}};
    desc.buttons = {{QStringLiteral("imgCancel"), QStringLiteral("Cancel"), ButtonLook::Secondary, {}}};
    Build(desc);
    setWindowTitle(QStringLiteral("Quillotone [Ripping...]"));

    // The bar's track, and the bar over it.
    auto* track = new QLabel(this);
    track->setGeometry(kBarRect.adjusted(0, 0, barWidth, 0));
    track->setStyleSheet(QStringLiteral("background: #EDE7FF; border-radius: 4px;"));
    auto* bar = new QLabel(this);
    bar->setObjectName(QStringLiteral("lblProgressBar"));
    bar->setGeometry(kBarRect);
    bar->setStyleSheet(QStringLiteral("background: #FF7A59; border-radius: 4px;"));

    auto* animation = new QLabel(this);
    animation->setObjectName(QStringLiteral("picAnimation"));
    animation->setGeometry(QRect(QPoint(60, 114), kDiscSize));
    picRippingAnimation.clear();
    for (int i = 0; i < kFrames; ++i)
        picRippingAnimation << paintDisc(i);
    animation->setPixmap(picRippingAnimation.first());

    tmrAnimation = new QTimer(this);
    tmrAnimation->setObjectName(QStringLiteral("tmrAnimation"));
    tmrAnimation->setInterval(400);
    connect(tmrAnimation, &QTimer::timeout, this, &frmRipping::tmrAnimation_Timer);
    tmrAnimation->start();

    connect(Button(QStringLiteral("imgCancel")), &CPictureButton::Released, this, &frmRipping::imgCancel_Released);
    PrepareDialog(this);
}

void frmRipping::tmrAnimation_Timer()
{
    mintFrame = (mintFrame + 1) % kFrames;
    Label(QStringLiteral("picAnimation"))->setPixmap(picRippingAnimation[mintFrame]);
}

void frmRipping::tmrStartRip_Timer()
{
    tmrStartRip->stop();
    RipTrack();
}

void frmRipping::RipTrack()
{
    try {
        mobjAudioCDGrabber2 = std::make_unique<NCTAudioCDGrabber2>();
        connect(mobjAudioCDGrabber2.get(), &NCTAudioCDGrabber2::OperationProgress, this,
                &frmRipping::mobjAudioCDGrabber2_OperationProgress);
        connect(mobjAudioCDGrabber2.get(), &NCTAudioCDGrabber2::FreeDBQueryStatus, this,
                &frmRipping::mobjAudioCDGrabber2_FreeDBQueryStatus);
        connect(mobjAudioCDGrabber2.get(), &NCTAudioCDGrabber2::OperationFailed, this,
                [this] { mbRipFailed = true; });
    } catch (const CError& e) {
        mstrRippedFile.clear();
        MsgBox(e.Description());
        return;
    }
    // From here a failing call is skipped; a track that cannot be read ends
    // the rip with a word to the user.
    NCTAudioCDGrabber2& grabber = *mobjAudioCDGrabber2;
    ErrObject err;
    ResumeNext(err, [&] { grabber.Open(); });
    grabber.GrabOptionA(1);
    grabber.GrabOptionC(1);
    PauseAndPump(100);
    // A cancel confirmed before this point is kept: nothing is ripped then.
    mbRipFinished = false;
    mbRipping = true;
    const CDTrackPlace place = SplitSessionInd(RipTrackIndex);
    ResumeNext(err, [&] { grabber.SelectSession(place.session); });
    ResumeNext(err, [&] { grabber.SelectTrack(place.track); });
    mbRipStarted = true;
    mstrRippedFile = QDir(GetTempFolder()).filePath(CreateUniqueName() + QStringLiteral(".mp3"));
    if (!mbRipCancelled)
        ResumeNext(err, [&] { grabber.RipToFile(mstrRippedFile); });
    // Progress, a failure and the cancel arrive as events; waiting for the
    // next one costs nothing while the grabber works.
    while (!mbRipFinished && !mbRipCancelled && !mbRipFailed)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    if (mbRipCancelled) {
        mstrRippedFile.clear();
        grabber.CancelOperation();
    }
    mbRipping = false;
    grabber.Close();
    PauseAndPump(100);
    mobjAudioCDGrabber2.reset();
    if (mbRipFailed && !mbRipCancelled) {
        // Half a track is no use to anyone: it goes.
        QFile::remove(mstrRippedFile);
        mstrRippedFile.clear();
        CDialog().Display(kTrackUnreadable, true, this);
    }
    Tag = mstrRippedFile;
    Hide();
}

void frmRipping::mobjAudioCDGrabber2_OperationProgress(double progress)
{
    QCoreApplication::processEvents();
    if (mbRipCancelled) {
        if (mobjAudioCDGrabber2)
            mobjAudioCDGrabber2->CancelOperation();
        mstrRippedFile.clear();
        return;
    }
    Label(QStringLiteral("lblPercentage"))->setText(QString::number(RoundToEven(progress)) + QStringLiteral("%"));
    QLabel* bar = Label(QStringLiteral("lblProgressBar"));
    bar->resize(TwipsToPixelsX(progress / 100 * kBarTwips), bar->height());
    if (progress == 100.0)
        mbRipFinished = true;
}

void frmRipping::imgCancel_Released()
{
    // The rip waits for the answer, so a confirmed cancel always comes first.
    const bool waiting = tmrStartRip->isActive();
    tmrStartRip->stop();
    if (ShowMessageWindow(QStringLiteral("frmCancelRip")) != QLatin1String("Q")) {
        if (waiting)
            tmrStartRip->start();
        return;
    }
    mbRipCancelled = true;
    if (waiting) {
        Tag.clear();
        Hide();
    }
}
